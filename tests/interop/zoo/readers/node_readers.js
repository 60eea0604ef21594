// SPDX-License-Identifier: MIT
// Packages of npm: "yauzl", "jszip", "fflate" or "adm-zip". The protocol is that of protocol.py.
'use strict';

const {createHash} = require('crypto');
const {readFileSync} = require('fs');
const {createInterface} = require('readline');
const {createRequire} = require('module');
const {promisify} = require('util');

const [library, folder] = process.argv.slice(2);
const module_ = createRequire(folder + '/')(library);

const hex = name => Buffer.from(name).toString('hex');

function item(name, content, isFolder = name.endsWith('/')) {
  if (isFolder && content.length === 0) return `d ${hex(name)}`;
  const digest = createHash('sha256').update(content).digest('hex');
  return `f ${hex(name)} ${content.length} ${digest}`;
}

const READERS = {
  async yauzl(path) {
    const archive = await promisify(module_.open)(path, {lazyEntries: true});
    const open = promisify(archive.openReadStream.bind(archive));
    const lines = [];
    try {
      await new Promise((resolve, reject) => {
        archive.on('error', reject);
        archive.on('end', resolve);
        archive.on('entry', async entry => {
          try {
            const pieces = [];
            for await (const piece of await open(entry)) pieces.push(piece);
            lines.push(item(entry.fileName, Buffer.concat(pieces)));
            archive.readEntry();
          } catch (fault) {
            reject(fault);
          }
        });
        archive.readEntry();
      });
    } finally {
      archive.close();
    }
    return lines;
  },

  async jszip(path) {
    const archive = await module_.loadAsync(readFileSync(path), {checkCRC32: true});
    const lines = [];
    for (const file of Object.values(archive.files)) {
      lines.push(item(file.name, await file.async('nodebuffer'), file.dir));
    }
    return lines;
  },

  async fflate(path) {
    return Object.entries(module_.unzipSync(readFileSync(path)))
        .map(([name, content]) => item(name, content));
  },

  async 'adm-zip'(path) {
    return new module_(path).getEntries().map(
        entry => item(entry.entryName, entry.getData(), entry.isDirectory));
  },
};

async function main() {
  for await (const path of createInterface({input: process.stdin})) {
    let lines;
    try {
      lines = [...await READERS[library](path), '.'];
    } catch (fault) {
      lines = [`! ${String(fault).replace(/[^ -~]/g, ' ')}`];
    }
    process.stdout.write([`= ${path}`, ...lines].join('\n') + '\n');
  }
}

main();
