// Starts `korvelcheck lsp` for schema files and project files, and shows the files of a baseline, to which diagnostics refer.
'use strict';
const vscode = require('vscode');
const { LanguageClient } = require('vscode-languageclient/node');

let client;

async function activate(context) {
  const command = vscode.workspace.getConfiguration('korvelcheck').get('path');
  client = new LanguageClient('korvelcheck', 'korvelcheck', { command, args: ['lsp'] }, {
    documentSelector: [{ scheme: 'file', language: 'xml' }, { scheme: 'file', pattern: '**/korvelcheck.toml' }],
    synchronize: { fileEvents: vscode.workspace.createFileSystemWatcher('**/korvelcheck.toml') },
  });
  context.subscriptions.push(vscode.workspace.registerTextDocumentContentProvider('korvelcheck', {
    provideTextDocumentContent: async (uri) => {
      const { text } = await client.sendRequest('workspace/textDocumentContent', { uri: uri.toString() });
      return text;
    },
  }));
  await client.start();
}

function deactivate() {
  return client?.stop();
}

module.exports = { activate, deactivate };
