#include "checksums/checksum_table.h"

const Operations kLibrary = {
    .rotate = roxeRotateImage,
    .straighten = roxeuAutoStraightenImage,
    .affine = roxeAffineTransform,
    .perspective = roxePerspectiveDistortionCorrection,
    .soft_focus = roxeSoftFocus,
    .replace_colour = roxeReplaceColor,
    .replace_colour_mask = roxeReplaceColorMask,
    .tint = roxeColorTint,
    .tint_mask = roxeColorTintMask,
    .temperature = roxeColorTemperature,
    .auto_gamma = roxeAutoGamma,
    .shadow_highlight = roxeShadowHighlight,
    .variations = roxeVariations,
    .correction_size = roxeGetPerspectiveDistortionCorrectionSize,
    .verify = roxeVerifyPixelArray,
};
