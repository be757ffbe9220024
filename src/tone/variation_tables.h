// Tone curves of the variations: row k, entry v is the output for v. Rows brighten (or darken) more
// the larger k is.
#ifndef ROXE_TONE_VARIATION_TABLES_H_
#define ROXE_TONE_VARIATION_TABLES_H_

#include <cstdint>

namespace roxe {

extern const uint8_t LIGHTER_TABLE[8][256];
extern const uint8_t DARKER_TABLE[8][256];

}  // namespace roxe

#endif  // ROXE_TONE_VARIATION_TABLES_H_
