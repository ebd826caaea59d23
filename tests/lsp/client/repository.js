// A git repository with a project of one schema file, in a temporary directory.
'use strict';
const { execFileSync } = require('node:child_process');
const fs = require('node:fs');
const os = require('node:os');
const path = require('node:path');

const PROJECT = '[schemas]\npaths = ["*.xml"]\nagainst = "git:HEAD"\n';

const SHOP = `<metalib name="shop" version="1">
  <meta name="items">
    <entry name="sku" type="uint32"/>
    <entry name="price" type="int64"/>
    <primarykey entries="sku"/>
  </meta>
</metalib>
`;

class Repository {
  constructor() {
    this.directory = fs.realpathSync(fs.mkdtempSync(path.join(os.tmpdir(), 'korvelcheck-')));
    this.environment = {
      PATH: '/usr/bin:/bin',
      HOME: this.directory,
      LC_ALL: 'C.UTF-8',
      GIT_CONFIG_GLOBAL: '/dev/null',
    };
    this.write('korvelcheck.toml', PROJECT);
    this.write('shop.xml', SHOP);
    this.git('init', '--quiet', '--initial-branch=main');
    this.git('add', '--all');
    this.git('-c', 'user.name=A', '-c', 'user.email=a@example.org', 'commit', '--quiet', '-m', 'Add shop');
  }

  git(...words) {
    execFileSync('git', words, { cwd: this.directory, env: this.environment });
  }

  write(file, text) {
    fs.writeFileSync(path.join(this.directory, file), text);
  }

  read(file) {
    return fs.readFileSync(path.join(this.directory, file), 'utf8');
  }

  remove() {
    fs.rmSync(this.directory, { recursive: true });
  }
}

module.exports = { Repository };
