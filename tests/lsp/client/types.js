// Holds what the server sends against the types of the protocol.
'use strict';
const assert = require('node:assert');
const types = require('vscode-languageserver-protocol/node');

const isNull = (value) => value === null;
const orNull = (is) => (value) => value === null || is(value);
const listOf = (is) => (value) => Array.isArray(value) && value.every((one) => is(one));

// The edit of an action may be left to codeAction/resolve.
const isCodeAction = (value) => types.CodeAction.is(value.data === undefined ? value : { ...value, edit: { changes: {} } });

// The library has no such function.
const isCompletionItem = (value) => typeof value.label === 'string' && types.TextEdit.is(value.textEdit)
  && Object.values(types.CompletionItemKind).includes(value.kind);

// What is the result of a request. Each request of a scenario needs a line.
const RESULTS = {
  'codeAction/resolve': types.CodeAction.is,
  'initialize': (value) => typeof value.capabilities === 'object',
  'shutdown': isNull,
  'textDocument/codeAction': listOf(isCodeAction),
  'textDocument/codeLens': listOf(types.CodeLens.is),
  'textDocument/completion': (value) => listOf(isCompletionItem)(value.items),
  'textDocument/definition': orNull(types.Location.is),
  'textDocument/diagnostic': (value) => value.kind === 'full' && listOf(types.Diagnostic.is)(value.items),
  'textDocument/documentSymbol': listOf(types.DocumentSymbol.is),
  'textDocument/hover': orNull(types.Hover.is),
  'textDocument/prepareRename': (value) => types.Range.is(value.range) && typeof value.placeholder === 'string',
  'textDocument/references': listOf(types.Location.is),
  'textDocument/rename': types.WorkspaceEdit.is,
  'workspace/textDocumentContent': (value) => typeof value.text === 'string',
};

function checkResult(method, result) {
  assert.ok(method in RESULTS, `types.js says nothing about the result of ${method}`);
  assert.ok(RESULTS[method](result), `not a result of ${method}: ${JSON.stringify(result)}`);
}

function checkDiagnostics(diagnostics) {
  assert.ok(listOf(types.Diagnostic.is)(diagnostics), `not diagnostics: ${JSON.stringify(diagnostics)}`);
}

module.exports = { checkResult, checkDiagnostics };
