// What the editor shows without changing anything: sizes, meanings, rules, and where names are declared and used.
'use strict';

module.exports = async (editor) => {
  const at = (piece) => ({ textDocument: { uri: editor.uri('shop.xml') }, position: editor.range('shop.xml', piece).start });
  const document = { textDocument: { uri: editor.uri('shop.xml') } };
  await editor.start();
  await editor.open('shop.xml', editor.repository.read('shop.xml').replace('int64', 'int32'));
  await editor.diagnostics('shop.xml');
  await editor.request('textDocument/hover', at('price'));
  await editor.request('textDocument/hover', at('entries'));
  await editor.request('textDocument/hover', at('int32"/>\n    <primary'));
  await editor.request('textDocument/definition', at('sku"/>\n  </meta>'));
  await editor.request('textDocument/references', { ...at('sku'), context: { includeDeclaration: true } });
  await editor.request('textDocument/documentSymbol', document);
  await editor.request('textDocument/codeLens', document);
};
