// An editor that starts the server, keeps the texts of documents, and records every message that a scenario waits for.
'use strict';
const assert = require('node:assert');
const { spawn } = require('node:child_process');
const { Writable } = require('node:stream');
const { pathToFileURL } = require('node:url');
const protocol = require('vscode-languageserver-protocol/node');
const { TextDocument } = require('vscode-languageserver-textdocument');
const { checkResult, checkDiagnostics } = require('./types');

// Passes bytes on, or keeps them and passes them on at once.
class Outbox extends Writable {
  constructor(target) {
    super();
    this.target = target;
    this.held = null;
  }

  _write(chunk, _encoding, done) {
    if (this.held) this.held.push(chunk);
    else this.target.write(chunk);
    done();
  }

  hold() {
    this.held = [];
  }

  release() {
    this.target.write(Buffer.concat(this.held));
    this.held = null;
  }
}

class Editor {
  constructor(program, repository) {
    this.repository = repository;
    this.transcript = [];
    this.documents = new Map();
    this.published = [];  // diagnostics that no scenario has waited for
    this.waiting = null;
    this.process = spawn(program, ['lsp', '--stdio'], { cwd: '/', env: repository.environment, stdio: ['pipe', 'pipe', 'inherit'] });
    this.outbox = new Outbox(this.process.stdin);
    this.connection = protocol.createProtocolConnection(
      new protocol.StreamMessageReader(this.process.stdout), new protocol.StreamMessageWriter(this.outbox));
    this.connection.onNotification(protocol.PublishDiagnosticsNotification.type, (params) => {
      checkDiagnostics(params.diagnostics);
      this.published.push(params);
      this.waiting?.();
    });
    this.refreshed = new Promise((resolve) => { this.connection.onRequest(protocol.DiagnosticRefreshRequest.type, resolve); });
    this.connection.listen();
  }

  uri(file) {
    return pathToFileURL(`${this.repository.directory}/${file}`).href;
  }

  text(file) {
    return this.documents.get(this.uri(file)).getText();
  }

  // The range of a piece of text, which the document contains.
  range(file, piece) {
    const document = this.documents.get(this.uri(file));
    const begin = document.getText().indexOf(piece);
    assert.notEqual(begin, -1, `${piece} is not in ${file}`);
    return { start: document.positionAt(begin), end: document.positionAt(begin + piece.length) };
  }

  // --- Messages ---

  record(direction, title, contents) {
    this.transcript.push({ direction, title, contents });
  }

  async notify(method, params) {
    this.record('-->', method, params);
    await this.connection.sendNotification(method, params);
  }

  // The result of a request, or null if it is answered with an error.
  async request(method, params, token) {
    this.record('-->', method, params);
    try {
      const result = await this.connection.sendRequest(method, ...[params, token].filter((one) => one !== undefined));
      checkResult(method, result);
      this.record('<--', `result of ${method}`, result);
      return result;
    } catch (error) {
      if (!(error instanceof protocol.ResponseError)) throw error;
      this.record('<--', `error of ${method}`, { code: error.code, message: error.message });
      return null;
    }
  }

  // Sends a request together with its cancellation.
  async requestAndCancel(method, params) {
    const source = new protocol.CancellationTokenSource();
    this.outbox.hold();
    const answered = this.request(method, params, source.token);
    source.cancel();
    this.record('-->', '$/cancelRequest', {});
    await this.connection.sendNotification('$/setTrace', { value: 'off' });  // everything before it is in the outbox
    this.outbox.release();
    await answered;
  }

  // --- The session ---

  // Not recorded: it is the same in every scenario.
  async start(capabilities = {}) {
    const before = this.transcript.length;
    await this.initialize(capabilities);
    this.transcript.splice(before);
  }

  async initialize(capabilities) {
    await this.request('initialize', { processId: null, rootUri: null, capabilities });
    await this.notify('initialized', {});
  }

  async end() {
    const exited = new Promise((resolve) => { this.process.on('exit', resolve); });
    await this.request('shutdown');
    await this.notify('exit');
    assert.equal(await exited, 0);
    this.connection.dispose();
    assert.deepEqual(this.published, [], 'the scenario waits for all diagnostics');
  }

  // --- Documents ---

  async open(file, text = this.repository.read(file)) {
    const uri = this.uri(file);
    const languageId = file.split('.').pop();
    this.documents.set(uri, TextDocument.create(uri, languageId, 1, text));
    await this.notify('textDocument/didOpen', { textDocument: { uri, languageId, version: 1, text } });
  }

  // Sends edits, the last one first, as an editor does.
  async edit(file, edits) {
    const document = this.documents.get(this.uri(file));
    const version = document.version + 1;
    const contentChanges = edits.map(({ range, newText }) => ({ range, text: newText }))
      .sort((left, right) => document.offsetAt(right.range.start) - document.offsetAt(left.range.start));
    TextDocument.update(document, contentChanges, version);
    await this.notify('textDocument/didChange', { textDocument: { uri: document.uri, version }, contentChanges });
  }

  async replace(file, piece, newText) {
    await this.edit(file, [{ range: this.range(file, piece), newText }]);
  }

  async close(file) {
    const uri = this.uri(file);
    this.documents.delete(uri);
    await this.notify('textDocument/didClose', { textDocument: { uri } });
  }

  // The next diagnostics of a document as it is now; of one that is closed, any.
  async diagnostics(file) {
    const uri = this.uri(file);
    const version = this.documents.get(uri)?.version;
    for (;;) {
      const index = this.published.findIndex((params) => params.uri === uri && params.version === version);
      const [found] = index < 0 ? [] : this.published.splice(index, 1);
      this.published = this.published.filter((params) => params.uri !== uri || params.version >= version);
      if (found) {
        this.record('<--', 'textDocument/publishDiagnostics', found);
        return found.diagnostics;
      }
      await new Promise((resolve) => { this.waiting = resolve; });
    }
  }

  // Waits until the server asks the editor to request diagnostics again.
  async refresh() {
    await this.refreshed;
    this.record('<--', 'workspace/diagnostic/refresh');
  }

  // --- Code actions ---

  // The actions of a kind for a piece of text.
  async actions(file, piece, kind, diagnostics = []) {
    const params = { textDocument: { uri: this.uri(file) }, range: this.range(file, piece), context: { diagnostics, only: [kind] } };
    return this.request('textDocument/codeAction', params);
  }

  // Makes the edits in open documents, writes those of other ones.
  async apply(workspaceEdit) {
    for (const [uri, edits] of Object.entries(workspaceEdit.changes)) {
      const file = decodeURIComponent(uri).slice(this.uri('').length);
      if (this.documents.has(uri)) await this.edit(file, edits);
      else this.repository.write(file, TextDocument.applyEdits(TextDocument.create(uri, '', 1, this.repository.read(file)), edits));
    }
  }
}

module.exports = { Editor };
