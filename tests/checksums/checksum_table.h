// The table of checksums: operations with parameters on synthetic pictures. It is the same with
// every compiler, optimisation, table of rows and processor. The first 1296 rows, those of
// checksum_table.cpp, are asked of every door; the others (layout_rows.h) of the library alone.
#ifndef ROXE_TESTS_CHECKSUMS_CHECKSUM_TABLE_H_
#define ROXE_TESTS_CHECKSUMS_CHECKSUM_TABLE_H_

#include <string>

#include "roxe.h"

// All operations: the library's or the literal references.
struct Operations {
  decltype(&roxeRotateImage) rotate;
  decltype(&roxeuAutoStraightenImage) straighten;
  decltype(&roxeAffineTransform) affine;
  decltype(&roxePerspectiveDistortionCorrection) perspective;
  decltype(&roxeSoftFocus) soft_focus;
  decltype(&roxeReplaceColor) replace_colour;
  decltype(&roxeReplaceColorMask) replace_colour_mask;
  decltype(&roxeColorTint) tint;
  decltype(&roxeColorTintMask) tint_mask;
  decltype(&roxeColorTemperature) temperature;
  decltype(&roxeAutoGamma) auto_gamma;
  decltype(&roxeShadowHighlight) shadow_highlight;
  decltype(&roxeVariations) variations;
  decltype(&roxeGetPerspectiveDistortionCorrectionSize) correction_size;
  decltype(&roxeVerifyPixelArray) verify;
};
extern const Operations kLibrary;
extern const Operations kReference;

// One line a case: operation, parameters, picture, status, FNV-1a of 64 bits over every byte of the
// destination, row padding included.
std::string ChecksumTable(const Operations& operations);

#endif  // ROXE_TESTS_CHECKSUMS_CHECKSUM_TABLE_H_
