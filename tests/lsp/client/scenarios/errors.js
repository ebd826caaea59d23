// Requests that fail: unknown ones, ones that were cancelled, ones about documents that are not open.
'use strict';

module.exports = async (editor) => {
  await editor.start();
  await editor.request('korvelcheck/unknown', {});
  await editor.open('shop.xml');
  await editor.diagnostics('shop.xml');
  const params = { textDocument: { uri: editor.uri('shop.xml') }, range: editor.range('shop.xml', 'int64'), context: { diagnostics: [] } };
  await editor.requestAndCancel('textDocument/codeAction', params);
  await editor.request('textDocument/codeAction', params);
  await editor.request('textDocument/codeAction', { ...params, textDocument: { uri: editor.uri('other.xml') } });
  await editor.request('textDocument/codeAction', { ...params, range: null });
  await editor.request('workspace/textDocumentContent', { uri: editor.uri('shop.xml') });
};
