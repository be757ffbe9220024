// From a file to pixels, with the reasons why not in plain sentences.

const LARGEST = 100e6;  // pixels: what a tab's memory holds several times over

async function signature(blob) {
  return new Uint8Array(await blob.slice(0, 16).arrayBuffer());
}

async function reason(blob) {
  const bytes = await signature(blob);
  const text = String.fromCharCode(...bytes);
  if (blob.size === 0) return 'is empty';
  if (text.slice(4, 8) === 'ftyp' && /hei|mif1|msf1|hev/.test(text.slice(8, 12)))
    return 'is HEIC, which this browser cannot read; save it as JPEG first';
  if (text.startsWith('II*') || text.startsWith('MM\0*'))
    return 'is TIFF or a raw photograph, which this browser cannot read; save it as JPEG or PNG first';
  return 'is not a picture that this browser can read';
}

/** {bitmap, image: {width, height, data}}: upright, its colours as they stand in the file. */
export async function openPicture(blob, name) {
  let bitmap;
  try {
    bitmap = await createImageBitmap(blob, {
      colorSpaceConversion: 'none', premultiplyAlpha: 'none', imageOrientation: 'from-image',
    });
  } catch {
    throw new Error(`${name} ${await reason(blob)}.`);
  }
  const {width, height} = bitmap;
  if (width * height > LARGEST)
    throw new Error(`${name} has ${width} × ${height} pixels; at most ${LARGEST / 1e6} million can be ` +
      'opened here.');
  const image = pixelsOf(bitmap, width, height);
  if (!isOpaque(image)) readExactly(bitmap, image);
  return {bitmap, image};
}

function isOpaque({data}) {
  for (let i = 3; i < data.length; i += 4) if (data[i] !== 255) return false;
  return true;
}

// A 2-D canvas holds colours multiplied by their opacity and loses bits on the way back. A texture
// keeps them; where it is too small for the picture, the rounded pixels stay.
function readExactly(bitmap, {width, height, data}) {
  const gl = new OffscreenCanvas(1, 1).getContext('webgl');
  if (!gl || Math.max(width, height) > gl.getParameter(gl.MAX_TEXTURE_SIZE)) return;
  gl.pixelStorei(gl.UNPACK_PREMULTIPLY_ALPHA_WEBGL, false);
  gl.pixelStorei(gl.UNPACK_COLORSPACE_CONVERSION_WEBGL, gl.NONE);
  gl.bindTexture(gl.TEXTURE_2D, gl.createTexture());
  gl.texImage2D(gl.TEXTURE_2D, 0, gl.RGBA, gl.RGBA, gl.UNSIGNED_BYTE, bitmap);
  gl.bindFramebuffer(gl.FRAMEBUFFER, gl.createFramebuffer());
  gl.framebufferTexture2D(gl.FRAMEBUFFER, gl.COLOR_ATTACHMENT0, gl.TEXTURE_2D,
    gl.getParameter(gl.TEXTURE_BINDING_2D), 0);
  if (gl.checkFramebufferStatus(gl.FRAMEBUFFER) === gl.FRAMEBUFFER_COMPLETE)
    gl.readPixels(0, 0, width, height, gl.RGBA, gl.UNSIGNED_BYTE, new Uint8Array(data.buffer));
  gl.getExtension('WEBGL_lose_context')?.loseContext();
}

function drawn(bitmap, {width, height}) {
  const canvas = new OffscreenCanvas(width, height);
  const context = canvas.getContext('2d', {willReadFrequently: true});
  context.imageSmoothingQuality = 'high';
  context.drawImage(bitmap, 0, 0, width, height);
  return canvas;
}

/** The pixels of a bitmap at a size. */
export function pixelsOf(bitmap, width, height) {
  const {data} = drawn(bitmap, {width, height}).getContext('2d').getImageData(0, 0, width, height);
  return {width, height, data};
}

/** A canvas with an image {width, height, data}, at another size where one is given. */
export function canvasOf(image, size = image) {
  const canvas = new OffscreenCanvas(image.width, image.height);
  canvas.getContext('2d', {willReadFrequently: true})
    .putImageData(new ImageData(image.data, image.width, image.height), 0, 0);
  return size.width === image.width && size.height === image.height ? canvas : drawn(canvas, size);
}
