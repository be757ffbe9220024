// One call of any of the fifteen operations, with parameters from a fuzzer's input.
#ifndef ROXE_FUZZ_CALL_H_
#define ROXE_FUZZ_CALL_H_

#include <cstdint>

#include "checksums/checksum_table.h"
#include "fuzz/input.h"
#include "roxe.h"

namespace fuzz {

enum Operation : int32_t {  // the order is that of the inputs in corpus/sequences
  kRotate,
  kStraighten,
  kAffine,
  kPerspective,
  kSoftFocus,
  kReplaceColour,
  kReplaceColourMask,
  kTint,
  kTintMask,
  kTemperature,
  kAutoGamma,
  kShadowHighlight,
  kVariations,
  kCorrectionSize,
  kVerify,
  kOperations
};

// What roxe.h says of an operation's result.
struct Contract {
  const char* name;          // of the export
  uint32_t results;          // bit r: it may return r
  bool untouched_on_error;   // dst is as it was unless the result is 0
  bool untouched_on_memory;  // dst is as it was when an allocation failed
  bool checks_null;          // a record may be missing
};
extern const Contract kContracts[kOperations];

// What one call is given besides its pictures.
struct Call {
  Operation operation;
  int32_t numbers[8];
  float angle;
  bool has_mask, has_region, has_target;
  Quad quad, target;
  PixelRect rect;
};

// What a call gives besides the bytes of its pictures.
struct Result {
  int32_t status, width, height;
  Quad quad;  // as the call left the corners

  bool operator==(const Result& other) const;
};

// width and height: of the pictures that the call is about, both at least 1.
struct Sides {
  int32_t width, height;
};
Call call_of(Input& input, Operation operation, Sides src, Sides dst);

Result run(const Operations& op, Call call, PixelArray* src, PixelArray* dst, PixelArray* mask);

}  // namespace fuzz

#endif  // ROXE_FUZZ_CALL_H_
