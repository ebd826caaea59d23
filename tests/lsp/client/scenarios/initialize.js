// What the server can do. Nothing works before the initialization, which works once.
'use strict';

module.exports = async (editor) => {
  await editor.request('textDocument/codeAction', {});
  await editor.initialize({ textDocument: { diagnostic: {} }, workspace: { diagnostics: { refreshSupport: true } } });
  await editor.initialize({});
};
