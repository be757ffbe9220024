// Writes a PNG of red, green, blue (and alpha, where not all is opaque) bytes exactly as they are; a
// canvas would round the colours of pixels that are not opaque.

const CRC = Uint32Array.from({length: 256}, (_, n) => {
  for (let k = 0; k < 8; ++k) n = n & 1 ? 0xedb88320 ^ (n >>> 1) : n >>> 1;
  return n;
});

function chunk(name, data) {
  const bytes = new Uint8Array(data.length + 12);
  const view = new DataView(bytes.buffer);
  view.setUint32(0, data.length);
  bytes.set([...name].map((letter) => letter.charCodeAt(0)), 4);
  bytes.set(data, 8);
  let crc = 0xffffffff;
  for (let i = 4; i < bytes.length - 4; ++i) crc = CRC[(crc ^ bytes[i]) & 255] ^ (crc >>> 8);
  view.setUint32(bytes.length - 4, ~crc >>> 0);
  return bytes;
}

/** A Blob of type image/png with the pixels of {width, height, data}. */
export async function encodePng({width, height, data}) {
  let opaque = true;
  for (let i = 3; i < data.length && opaque; i += 4) opaque = data[i] === 255;
  const channels = opaque ? 3 : 4;
  // Every row starts with its filter: 1, the difference from the pixel to the left.
  const rows = new Uint8Array(height * (1 + channels * width));
  let at = 0;
  for (let y = 0; y < height; ++y) {
    rows[at++] = 1;
    for (let x = 0; x < width; ++x)
      for (let c = 0; c < channels; ++c) {
        const i = 4 * (y * width + x) + c;
        rows[at++] = x > 0 ? data[i] - data[i - 4] : data[i];
      }
  }
  const deflated = new Blob([rows]).stream().pipeThrough(new CompressionStream('deflate'));
  const header = new Uint8Array(13);
  const view = new DataView(header.buffer);
  view.setUint32(0, width);
  view.setUint32(4, height);
  header.set([8, opaque ? 2 : 6], 8);
  return new Blob([
    Uint8Array.of(0x89, 0x50, 0x4e, 0x47, 0x0d, 0x0a, 0x1a, 0x0a),
    chunk('IHDR', header),
    chunk('IDAT', new Uint8Array(await new Response(deflated).arrayBuffer())),
    chunk('IEND', new Uint8Array(0)),
  ], {type: 'image/png'});
}
