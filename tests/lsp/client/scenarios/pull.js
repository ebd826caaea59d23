// An editor that requests diagnostics itself, again when the server asks for it.
'use strict';

module.exports = async (editor) => {
  await editor.start({ textDocument: { diagnostic: {} }, workspace: { diagnostics: { refreshSupport: true } } });
  await editor.open('shop.xml', editor.repository.read('shop.xml').replace('int64', 'int32'));
  await editor.request('textDocument/diagnostic', { textDocument: { uri: editor.uri('shop.xml') } });
  await editor.replace('shop.xml', 'int32"/>\n    <primary', 'int64"/>\n    <primary');
  await editor.request('textDocument/diagnostic', { textDocument: { uri: editor.uri('shop.xml') } });
  await editor.notify('textDocument/didSave', { textDocument: { uri: editor.uri('shop.xml') } });
  await editor.refresh();
};
