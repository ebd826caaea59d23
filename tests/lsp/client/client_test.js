// Runs each file of scenarios against the server and compares the messages with the file of the same name in transcripts:
//
//   tests/lsp/client/run KORVELCHECK [SCENARIO...]
//
// KORVEL_UPDATE_GOLDENS=1 writes the transcripts. Ids are left out, because the library chooses them.
'use strict';
const assert = require('node:assert');
const fs = require('node:fs');
const path = require('node:path');
const test = require('node:test');
const { Range } = require('vscode-languageserver-protocol/node');
const { Editor } = require('./editor');
const { Repository } = require('./repository');

const [named, ...selected] = process.argv.slice(2);
const program = path.resolve(named);
const directory = (name) => path.join(__dirname, name);
const namesIn = (name, extension) => fs.readdirSync(directory(name)).map((file) => path.basename(file, extension)).sort();

// A range as one word: "3:30-3:35", lines and characters from 0.
function shortened(_key, value) {
  if (!Range.is(value)) return value;
  const [start, end] = [value.start, value.end].map(({ line, character }) => `${line}:${character}`);
  return `${start}-${end}`;
}

// Everything that differs between machines and days is replaced.
function asText(transcript, repository) {
  const messages = transcript.map(({ direction, title, contents }) => {
    const lines = contents === undefined ? '' : `${JSON.stringify(contents, shortened, 2)}\n`;
    return `${direction} ${title}\n${lines}`;
  });
  return messages.join('\n')
    .replaceAll(repository.directory, '/repository')
    .replace(/"version": "[0-9.]+"/g, '"version": "VERSION"')
    .replace(/\b20\d\d-\d\d-\d\d\b/g, 'YYYY-MM-DD');
}

async function run(name) {
  const repository = new Repository();
  try {
    const editor = new Editor(program, repository);
    try {
      await require(directory(`scenarios/${name}.js`))(editor);
      await editor.end();
    } finally {
      editor.process.kill();
    }
    return asText(editor.transcript, repository);
  } finally {
    repository.remove();
  }
}

function compare(name, text) {
  const file = directory(`transcripts/${name}.txt`);
  if (process.env.KORVEL_UPDATE_GOLDENS) fs.writeFileSync(file, text);
  assert.equal(text, fs.readFileSync(file, 'utf8'));
}

const scenarios = namesIn('scenarios', '.js');
for (const name of selected.length ? selected : scenarios) {
  test(name, async () => compare(name, await run(name)));
}
test('each transcript has a scenario', () => assert.deepEqual(namesIn('transcripts', '.txt'), scenarios));
