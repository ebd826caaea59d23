// The next version of a schema is typed: a new entry with the attributes, the types and the version that it needs.
'use strict';

module.exports = async (editor) => {
  const complete = (piece) => {
    const position = editor.range('shop.xml', piece).end;
    return editor.request('textDocument/completion', { textDocument: { uri: editor.uri('shop.xml') }, position });
  };
  await editor.start();
  await editor.open('shop.xml');
  await editor.diagnostics('shop.xml');
  await editor.replace('shop.xml', '    <primarykey', '    <\n    <primarykey');
  await complete('int64"/>\n    <');
  await editor.diagnostics('shop.xml');
  await editor.replace('shop.xml', '    <\n', '    <entry name="zone" type="uint" version=""/>\n');
  await complete('name="zone" type="uint');
  await complete('name="zone" type="uint" version="');
  await editor.diagnostics('shop.xml');
};
