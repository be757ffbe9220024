// ROXE: fifteen image operations on 8-bit pictures, as plain C functions.
//
// The host owns every picture: it allocates the pixels, describes them with a PixelArray record and
// calls one operation at a time. The library keeps nothing between calls: it has no state, threads,
// files, configuration or output, and the same call gives the same bytes on every machine. (On
// x86-64 the compiler's support code records once, when the library is loaded, what the processor
// can do.)
//
// Common to all operations, unless an operation says otherwise:
//
// - Only the pixel bytes of each row are touched. Bytes between the end of a row and the start of
//   the next (row padding) are neither read nor written, and no row is read or written past its
//   rowBytes: where a record is used as 24-bit and its rows are too short for 3 * width bytes, the
//   columns that do not fit, all of them where rowBytes is negative, count as outside the picture.
// - A destination is never cleared. Pixels that an operation does not reach keep what they held, so
//   a host fills the destination with its background first where that matters.
// - Source and destination may be the same record.
// - Results are truncated, not rounded.
// - Colours passed as separate arguments come in the order of the pixel bytes: blue, green, red
//   (the steps of roxeVariations: red, green, blue).
// - The rounding, masks, flags and flushing of floating-point arithmetic that the host has chosen
//   have no effect and are afterwards what they were, and so is errno.
// - A record of an unknown format counts as verified whatever its other fields hold; where its
//   pixels are null an operation returns its normal status and touches nothing.
#ifndef ROXE_H_
#define ROXE_H_

#include <stddef.h>
#include <stdint.h>

// On Windows a host that links the static library defines ROXE_STATIC; the library itself is built
// with ROXE_BUILD.
#if !defined(_WIN32)
#define ROXE_API __attribute__((visibility("default")))
#elif defined(ROXE_BUILD)
#define ROXE_API __declspec(dllexport)
#elif defined(ROXE_STATIC)
#define ROXE_API
#else
#define ROXE_API __declspec(dllimport)
#endif

#ifdef __cplusplus
#define ROXE_UNDERLYING(type) : type
extern "C" {
#else
#define ROXE_UNDERLYING(type)
#endif

// clang-format off
// Pixel formats.
enum RoxeFormat ROXE_UNDERLYING(uint32_t) {
  kRoxeFormatRGB24 = 0,  // three bytes a pixel: blue, green, red
  kRoxeFormatGray8 = 3   // one byte a pixel: masks and single planes
};

// Status codes, the results of most operations.
enum RoxeStatus ROXE_UNDERLYING(int32_t) {
  kRoxeOK = 0,          // success, or nothing to do
  kRoxeErrInvalid = 1,  // a record is malformed, or memory or a table could not be had
  kRoxeErrNull = 2,     // a record is missing
  kRoxeErrFailed = 3,   // a stage failed after the checks had passed
  kRoxeErrParam = 4     // another parameter is unusable
};
// clang-format on

// A picture in the host's memory. Row y starts y * rowBytes bytes after pixels; rows run top to
// bottom. The host's own record may go on after these five fields.
typedef struct PixelArray {
  uint32_t format;   // kRoxeFormatRGB24 or kRoxeFormatGray8
  int32_t width;     // pixels in a row
  int32_t height;    // rows
  int32_t rowBytes;  // bytes from the start of one row to the start of the next
  uint8_t* pixels;   // first byte of the top row
} PixelArray;

// A rectangle of pixels; right and bottom are exclusive.
typedef struct PixelRect {
  int32_t left, top, right, bottom;
} PixelRect;

// Four corners in pixel coordinates, x to the right, y downwards, in the order of the boundary.
typedef struct Quad {
  int32_t x0, y0, x1, y1, x2, y2, x3, y3;
} Quad;

#if defined(__cplusplus)
#define ROXE_OFFSET(type, field, bytes)           \
  static_assert(offsetof(type, field) == (bytes), \
                "the layout of " #type " is part of the interface")
#elif defined(__STDC_VERSION__) && __STDC_VERSION__ >= 201112L
#define ROXE_OFFSET(type, field, bytes)            \
  _Static_assert(offsetof(type, field) == (bytes), \
                 "the layout of " #type " is part of the interface")
#else  // C99: an array of negative size does not compile
#define ROXE_OFFSET(type, field, bytes) \
  typedef char roxe_offset_of_##type##_##field[offsetof(type, field) == (bytes) ? 1 : -1]
#endif
ROXE_OFFSET(PixelArray, format, 0);
ROXE_OFFSET(PixelArray, width, 4);
ROXE_OFFSET(PixelArray, height, 8);
ROXE_OFFSET(PixelArray, rowBytes, 12);
ROXE_OFFSET(PixelArray, pixels, 16);
ROXE_OFFSET(PixelRect, left, 0);
ROXE_OFFSET(PixelRect, top, 4);
ROXE_OFFSET(PixelRect, right, 8);
ROXE_OFFSET(PixelRect, bottom, 12);
ROXE_OFFSET(Quad, x0, 0);
ROXE_OFFSET(Quad, y1, 12);
ROXE_OFFSET(Quad, x2, 16);
ROXE_OFFSET(Quad, y3, 28);
#undef ROXE_OFFSET

// Checks a record, in this order.
//
// image    the record, or null
//
// Returns kRoxeErrNull for a missing record. For RGB24 and Gray8: kRoxeErrInvalid if width or
// height is below 1, if the row needs more bytes (3 * width or width, in 32 bits that wrap) than
// rowBytes, or if pixels is null. kRoxeOK otherwise, and at once for any other format: such a
// record passes unexamined.
ROXE_API int32_t roxeVerifyPixelArray(const PixelArray* image);

// ---------------------------------------------------------------------------------------- geometry

// Rotates src about a centre and puts that centre at a chosen point of dst, with bilinear sampling
// (16.16 fixed point along rows and columns, weights of 8 bits).
//
// src, dst                  src is RGB24; dst is written as 24-bit whatever its format.
// srcCentreX, srcCentreY    the centre of rotation, in source pixels
// dstCentreX, dstCentreY    where that point comes to lie, in destination pixels
// angle                     radians. The destination pixel at offset (x, y) from its centre shows
//                           the source at offset (cos(angle) x + sin(angle) y, cos(angle) y -
//                           sin(angle) x) from its own: on screen (y down) the picture turns
//                           clockwise by angle.
//
// A destination pixel is written only if the whole part of its source position is 1 ... width - 2
// and 1 ... height - 2: not at positions below 1, nor from the last column and row on. The others,
// among them a seam of one pixel at angle 0, are left as they were. If src and dst share memory,
// pixels are written in row order and later ones read what earlier ones wrote. An angle that is not
// finite writes nothing.
//
// Returns 2 or 1 from roxeVerifyPixelArray, src first; otherwise kRoxeOK. A source that is not
// RGB24 gives kRoxeOK and writes nothing. Allocates nothing.
ROXE_API int32_t roxeRotateImage(const PixelArray* src, int32_t srcCentreX, int32_t srcCentreY,
                                 float angle, PixelArray* dst, int32_t dstCentreX,
                                 int32_t dstCentreY);

// Levels a photograph along a line drawn on it: rotates src about its centre (width >> 1,
// height >> 1) into the centre of dst so that the line becomes horizontal or vertical, whichever is
// nearer (at most 45 degrees).
//
// src, dst          as for roxeRotateImage. Both records must exist: no check is made for null.
// x1, y1, x2, y2    two points of the line, in source pixels
//
// Returns kRoxeOK without touching dst (not even copying) if the line is already horizontal or
// vertical or the points coincide, before either record is verified; otherwise what roxeRotateImage
// returns. Allocates nothing.
ROXE_API int32_t roxeuAutoStraightenImage(const PixelArray* src, int32_t x1, int32_t y1, int32_t x2,
                                          int32_t y2, PixelArray* dst);

// Draws a convex quadrilateral of src, straightened, into an upright rectangle of dst: a projective
// mapping (homography) sampled bilinearly, two divisions a pixel.
//
// src, dst     used as 24-bit whatever their formats. If they share memory, pixels are written in
//              row order and later ones read what earlier ones wrote.
// quad         the corners in src. If dstQuad is null they may start anywhere and run either way,
//              and are reordered in place: top left, top right, bottom right, bottom left.
// dstQuad      where the four corners of quad come to lie in dst, corner by corner; quad is then
//              left as it is. Null: the corners of rect.
// rect         the area of dst to draw. It may reach past dst on any side but must overlap it. Its
//              exclusive right and bottom edges are where the right and bottom corners are mapped.
//
// Products of two coordinates are formed in 32 bits that wrap: corners further than 46340 pixels
// apart may be refused or mapped otherwise.
//
// A pixel whose source position is not covered by four source pixels is left as it was. Positions
// between -1 and 0 extrapolate from the first column or row, and their values wrap to 8 bits.
//
// Returns 2 or 1 from roxeVerifyPixelArray, src first; kRoxeErrParam if quad is null or not convex,
// if rect is empty or outside dst, or if memory for the mapping cannot be had; kRoxeErrFailed if
// dst, a record of unknown format, has a width or height below 1 and rect begins further left or
// further up than that; otherwise kRoxeOK. Allocates 320 bytes and 8 pointers.
ROXE_API int32_t roxeAffineTransform(const PixelArray* src, PixelArray* dst, Quad* quad,
                                     const Quad* dstQuad, PixelRect rect);

// Proposes the natural size of a quadrilateral drawn upright: the average of opposite edges,
// rounded down.
//
// quad                   the corners; reordered in place as by roxeAffineTransform when accepted
// unused1 ... unused3    have no effect
// outWidth, outHeight    receive the size in pixels, both at least 1; either may be null
//
// Returns 1, not a status code, on success; 0 if quad is null, two corners coincide, three lie on
// one line or the corners are not convex; then nothing is written. Allocates nothing.
ROXE_API int32_t roxeGetPerspectiveDistortionCorrectionSize(Quad* quad, int32_t unused1,
                                                            int32_t unused2, int32_t unused3,
                                                            int32_t* outWidth, int32_t* outHeight);

// Corrects perspective: draws the quadrilateral upright into rect, narrowed or shortened (the top
// left corner stays) to the proportions that roxeGetPerspectiveDistortionCorrectionSize proposes.
//
// src, dst, quad, rect    as for roxeAffineTransform without dstQuad; quad is sorted twice
// unused1, unused2        have no effect
//
// Returns 2 on success. Returns 4 if quad is null or has no natural size, and 0 if the drawing
// failed for any other reason (records, rectangle, memory). Allocates what roxeAffineTransform
// does.
ROXE_API int32_t roxePerspectiveDistortionCorrection(const PixelArray* src, PixelArray* dst,
                                                     Quad* quad, int32_t unused1, int32_t unused2,
                                                     PixelRect rect);

// -------------------------------------------------------------------------------------------- blur

// Soft focus: blurs src into dst (three box blurs, close to a Gaussian), then pulls each pixel back
// towards the source in proportion to a mask that is itself blurred first.
//
// src, dst      RGB24 of the same size. In place the source is already blurred when it is blended,
//               so the mask has no effect.
// mask          Gray8 of the same size: 255 keeps the source (up to one level below it), 0 the
//               blurred picture. May be null: the blurred picture.
// radius        window length of the blur in pixels (a diameter, despite its name); 1 or less: none
// maskRadius    the same for the mask
//
// Means are rounded down, so that one blur takes a level or more off a white area unless the pixels
// of its window are a power of two; windows of more than 8388608 pixels give black. After three
// blurs the inside of a white area is 252 for radius 3 to 189, 251 for 300 and 244 for 600, and 254
// where the radius is a power of two up to 256. Near the edges of the picture, where windows are
// clipped, it is 252 to 255 for radius 2 to 20 and at the least 236 for 600.
//
// Returns 2 if src, dst or mask fails verification in any way; 4 for a wrong format or different
// sizes; 1 if memory for the mask cannot be had; otherwise 0. Memory that cannot be had for the
// blur itself is not reported. Except on 0 dst is untouched.
//
// Allocates for the picture (c = 3 channels), and at the same time for a mask that is blurred
// (c = 1), with W = width rounded up to a multiple of 32,
//
//   447 + 576 c + 24 W + c W (15 + rows) bytes
//
// where rows counts the rows that the three blurs keep: min(n + 1, height) each for windows of n =
// radius, radius, and radius (odd) or radius + 1 (even) rows. Each blur whose window holds more
// than 257 rows takes 64 c + 4 c W bytes more. Nothing is allocated for a radius of 1 or less, and
// a mask that is not blurred or has no effect takes none. Pictures that overlap other than in place
// take a copy of the mask and, blur by blur, the rows, sums and reciprocals of one window instead.
ROXE_API int32_t roxeSoftFocus(const PixelArray* src, PixelArray* dst, const PixelArray* mask,
                               int32_t radius, int32_t maskRadius);

// ------------------------------------------------------------------------------------------ colour
//
// The operations of this section use both records as 24-bit whatever their formats and process the
// area that both hold; the rest of the destination stays. The selection is by distance from a
// reference colour in a cone of hue (its angle), saturation and value (radius and height of 0 to
// 255): a colour is within the tolerance if it lies less than 2 * (tolerance + 1) away.

// Replaces a colour: shifts hue, saturation and value of the pixels near a reference colour, fully
// at the reference and fading to nothing at the edge of the tolerance.
//
// src, dst              used as 24-bit; the common area is written
// blue, green, red      the reference colour, 0 ... 255; above 255 counts as 255
// tolerance             0 ... 200 steps of distance; above 200 counts as 200
// hueShift              degrees
// saturationShift       percent of the full scale, -100 ... 100. Greys stay grey.
// valueShift            percent of the full scale, -100 ... 100
//
// Always returns kRoxeOK; a missing record or missing pixels: nothing is touched. Allocates
// nothing.
ROXE_API int32_t roxeReplaceColor(const PixelArray* src, PixelArray* dst, uint32_t blue,
                                  uint32_t green, uint32_t red, uint32_t tolerance,
                                  int32_t hueShift, int32_t saturationShift, int32_t valueShift);

// Draws the selection of roxeReplaceColor as a grey picture in three equal channels: 255 at the
// reference colour, 0 beyond the tolerance.
//
// src, mask                      used as 24-bit; the common area is written
// blue, green, red, tolerance    as for roxeReplaceColor
//
// Always returns kRoxeOK; a missing record or missing pixels: nothing is touched. Allocates
// nothing.
ROXE_API int32_t roxeReplaceColorMask(const PixelArray* src, PixelArray* mask, uint32_t blue,
                                      uint32_t green, uint32_t red, uint32_t tolerance);

// Colour accent: keeps the colours near a reference colour and turns the others towards grey, fully
// beyond the tolerance. The weights of the grey level sum to 255 / 256, so white becomes 254.
//
// src, dst              used as 24-bit; the common area is written
// blue, green, red      the reference colour, 0 ... 255; above 255 counts as 255
// tolerance             0 ... 200 steps of distance; above 200 counts as 200
//
// Always returns kRoxeOK; a missing record or missing pixels: nothing is touched. Allocates
// nothing.
ROXE_API int32_t roxeColorTint(const PixelArray* src, PixelArray* dst, uint32_t blue,
                               uint32_t green, uint32_t red, uint32_t tolerance);

// The same selection as roxeReplaceColorMask, under the name that belongs to roxeColorTint. It
// fades with the curve of the replacement; the tint itself fades linearly.
//
// src, mask, blue, green, red, tolerance    as for roxeReplaceColorMask
//
// Always returns kRoxeOK; a missing record or missing pixels: nothing is touched. Allocates
// nothing.
ROXE_API int32_t roxeColorTintMask(const PixelArray* src, PixelArray* mask, uint32_t blue,
                                   uint32_t green, uint32_t red, uint32_t tolerance);

// White balance in linear light (sRGB transfer function), with a cap at about twice the brightness.
//
// src, dst       used as 24-bit; the common area is written
// temperature    -100 (cooler) ... 100 (warmer), clamped
// tint           -100 (greener) ... 100 (more magenta), clamped
//
// Even 0, 0 changes a picture slightly: the way to linear light and back is not exact, and strong
// channels spill into the others.
//
// Returns 2 or 1 from roxeVerifyPixelArray, src first; kRoxeErrParam if the gains cannot be made;
// otherwise kRoxeOK. Allocates nothing.
ROXE_API int32_t roxeColorTemperature(const PixelArray* src, PixelArray* dst, int32_t temperature,
                                      int32_t tint);

// -------------------------------------------------------------------------------------------- tone

// Corrects exposure with one gamma (0.65 ... 1.2) chosen from the histogram of the green channel so
// that the weighted slope of the curve is largest.
//
// src, dst    src is RGB24; dst is written as 24-bit whatever its format. The common area is
//             written.
// rect        the region whose histogram is taken, or null for the whole picture. Negative sides
//             count as 0. A region that reaches past the right edge goes on into the row padding
//             and the next row; what lies past the height * rowBytes bytes of src is not read.
//
// Returns 2 or 1 from roxeVerifyPixelArray, src first; kRoxeErrInvalid for an empty region or if
// memory cannot be had; otherwise kRoxeOK. A source that is not RGB24 gives kRoxeOK and writes
// nothing. Except on kRoxeOK dst is untouched. Allocates 1024 bytes at most.
ROXE_API int32_t roxeAutoGamma(const PixelArray* src, PixelArray* dst, const PixelRect* rect);

// Opens shadows, tames highlights and changes the contrast of the midtones, by the brightness of
// the surroundings of each pixel. The same amount is added to all three channels.
//
// src, dst              used as 24-bit; the common area is written
// shadow, highlight     amounts, 0 (none) ... 100
// midtone               -100 (flatter) ... 100 (steeper), 0: none
//
// Even 0, 0, 0 lowers the pixels whose intensity is not a whole number by one level.
//
// Always returns kRoxeOK; a missing record, missing pixels or no memory: nothing is touched, nor
// where 8 * width * height bytes do not fit 32 bits. Allocates 100 * width bytes, width being that
// of the common area, and nothing where shadow and highlight are 0 or the area is one pixel wide or
// high; 8 * width * height bytes where the pictures overlap but their rows are not the same.
ROXE_API int32_t roxeShadowHighlight(const PixelArray* src, PixelArray* dst, uint32_t shadow,
                                     uint32_t highlight, int32_t midtone);

// Colour balance and brightness in steps, by one curve a channel.
//
// src, dst            used as 24-bit; the common area is written
// red, green, blue    steps to take away from a channel: one step darkens it by two units and
//                     lightens each of the others by one; negative steps the other way
// dark                steps to darken the whole picture, two units each
// level               size of a unit, 0 ... 6, clamped
//
// A channel moves by at most 60 units. Several curves map 255 to 254.
//
// Always returns kRoxeOK; a missing record, missing pixels or no memory: nothing is touched.
// Allocates 6144 bytes.
ROXE_API int32_t roxeVariations(const PixelArray* src, PixelArray* dst, int32_t red, int32_t green,
                                int32_t blue, int32_t dark, int32_t level);

#ifdef __cplusplus
}  // extern "C"
#endif
#undef ROXE_UNDERLYING

#endif  // ROXE_H_
