#include "checksums/checksum_table.h"
#include "reference/blur.h"
#include "reference/colour.h"
#include "reference/frame.h"
#include "reference/geometry.h"
#include "reference/tone.h"

const Operations kReference = {
    .rotate = reference::roxeRotateImage,
    .straighten = reference::roxeuAutoStraightenImage,
    .affine = reference::roxeAffineTransform,
    .perspective = reference::roxePerspectiveDistortionCorrection,
    .soft_focus = reference::roxeSoftFocus,
    .replace_colour = reference::roxeReplaceColor,
    .replace_colour_mask = reference::roxeReplaceColorMask,
    .tint = reference::roxeColorTint,
    .tint_mask = reference::roxeColorTintMask,
    .temperature = reference::roxeColorTemperature,
    .auto_gamma = reference::roxeAutoGamma,
    .shadow_highlight = reference::roxeShadowHighlight,
    .variations = reference::roxeVariations,
    .correction_size = reference::roxeGetPerspectiveDistortionCorrectionSize,
    .verify = reference::roxeVerifyPixelArray,
};
