// What the package ktx-parse finds in KTX2 files:  node ktx-witness.mjs FOLDER
//
// Beside each NAME.ktx2 of the folder stand then NAME.ktx2.parsed, its fields in lines of numbers; NAME.ktx2.levels, the
// bytes of its levels, the largest first, unpacked by Node.js where they are packed; and NAME.rewritten, the file as the
// package writes what it read. The package lies in FOLDER/node_modules.
import { readdirSync, readFileSync, writeFileSync } from 'node:fs';
import { createRequire } from 'node:module';
import { join, resolve } from 'node:path';
import { pathToFileURL } from 'node:url';
import { zstdDecompressSync } from 'node:zlib';

const folder = resolve(process.argv[2]);
const found = createRequire(join(folder, 'here.js')).resolve('ktx-parse');
const { read, write } = await import(pathToFileURL(found));

function lines(file) {
  const d = file.dataFormatDescriptor[0];
  const out = [
    ['header', file.vkFormat, file.typeSize, file.pixelWidth, file.pixelHeight, file.pixelDepth, file.layerCount,
      file.faceCount, file.levelCount, file.supercompressionScheme],
    ['descriptor', d.vendorId, d.descriptorType, d.versionNumber, d.colorModel, d.colorPrimaries, d.transferFunction,
      d.flags],
    ['block', ...d.texelBlockDimension, ...d.bytesPlane],
    ...d.samples.map((s) => ['sample', s.bitOffset, s.bitLength, s.channelType, ...s.samplePosition,
      s.sampleLower >>> 0, s.sampleUpper >>> 0]),
    ...Object.entries(file.keyValue).map(([key, value]) => ['text', key, value]),
    ...file.levels.map((level) => ['level', level.uncompressedByteLength]),
  ];
  return out.map((line) => line.join(' ') + '\n').join('');
}

for (const name of readdirSync(folder).filter((name) => name.endsWith('.ktx2'))) {
  const path = join(folder, name);
  const file = read(readFileSync(path));
  const levels = file.levels.map((level) =>
    file.supercompressionScheme === 2 ? zstdDecompressSync(level.levelData) : Buffer.from(level.levelData));
  writeFileSync(`${path}.parsed`, lines(file));
  writeFileSync(`${path}.levels`, Buffer.concat(levels));
  writeFileSync(path.replace(/ktx2$/, 'rewritten'), write(file));
}
