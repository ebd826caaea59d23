// A waiver in a project file that is open, and then in one that is not.
'use strict';

const waive = async (editor) => {
  const [, waiver] = await editor.actions('shop.xml', 'int32"/>\n    <primary', 'quickfix');
  await editor.apply(waiver.edit);
};

module.exports = async (editor) => {
  await editor.start();
  await editor.open('korvelcheck.toml');
  await editor.diagnostics('korvelcheck.toml');
  await editor.open('shop.xml', editor.repository.read('shop.xml').replace('int64', 'int32'));
  await editor.diagnostics('shop.xml');
  await waive(editor);
  await editor.diagnostics('korvelcheck.toml');
  await editor.diagnostics('shop.xml');
  await editor.close('korvelcheck.toml');
  await editor.diagnostics('korvelcheck.toml');
  await editor.diagnostics('shop.xml');
  await waive(editor);
  await editor.notify('workspace/didChangeWatchedFiles', { changes: [{ uri: editor.uri('korvelcheck.toml'), type: 2 }] });
  await editor.diagnostics('shop.xml');
};
