// A new field is renamed; a field that the baseline has is not.
'use strict';

const ZONE = '    <entry name="zone" type="uint32" version="2"/>\n    <index name="by_zone">\n      <column entry="zone"/>\n    </index>\n';

module.exports = async (editor) => {
  const at = (piece) => ({ textDocument: { uri: editor.uri('shop.xml') }, position: editor.range('shop.xml', piece).start });
  await editor.start();
  await editor.open('shop.xml');
  await editor.diagnostics('shop.xml');
  await editor.replace('shop.xml', '    <primarykey entries="sku"/>\n', `    <primarykey entries="sku"/>\n${ZONE}`);
  await editor.replace('shop.xml', 'version="1"', 'version="2"');
  await editor.diagnostics('shop.xml');
  await editor.request('textDocument/prepareRename', at('zone'));
  const edit = await editor.request('textDocument/rename', { ...at('zone'), newName: 'area' });
  await editor.apply(edit);
  await editor.diagnostics('shop.xml');
  await editor.request('textDocument/rename', { ...at('price'), newName: 'cost' });
};
