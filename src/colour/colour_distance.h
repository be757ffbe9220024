// Distances between two colours given by hue, saturation and value.
// Exported operations reach colours_near only: the rows have the metric and its tables themselves.
#ifndef ROXE_COLOUR_COLOUR_DISTANCE_H_
#define ROXE_COLOUR_COLOUR_DISTANCE_H_

#include <cstdint>

#include "rows/rows.h"

namespace roxe {

// Fills the first so many entries of each table: 256 exp(-0.005 i^2); 32768 cos(i degrees), as the
// bits of a signed number; 16384 / i (entry 0 is 0).
void init_cylindrical_metric(uint32_t* fade_table, uint32_t fade_count, uint32_t* cos_table,
                             uint32_t cos_count, uint32_t* reciprocal_table,
                             uint32_t reciprocal_count);

// The distance in a cone of value and saturation with the hue as its angle: a quarter of the
// squared chord, divided by limit, 0 ... limit - 1 for a chord shorter than 2 * limit, else limit.
// limit_squared and limit_reciprocal belong to limit; values are 0 ... 255, hues 0 ... 360, limit 0
// ... 201. Tables as init_cylindrical_metric fills them: 256 entries of fade, 361 cosines.
uint32_t cylindrical_metric(int32_t hue, int32_t saturation, uint32_t value, int32_t ref_hue,
                            int32_t ref_saturation, uint32_t ref_value, uint32_t limit,
                            uint32_t limit_squared, uint32_t limit_reciprocal,
                            const uint32_t* fade_table, const uint32_t* cos_table);

// The colours at a distance below limit (at most 201) from a reference colour, whose components
// above 255 count as 255.
ColourSelection colours_near(uint32_t blue, uint32_t green, uint32_t red, uint32_t limit);

// Distances in floats, 0 ... 1, limit or more giving 1.

// The difference in value from a first colour that is nearly grey or black; 1 from any other.
double achromatic_pixel_metric(double hue1, double saturation1, double value1, double hue2,
                               double saturation2, double value2, double limit);

// The square root of |hue| + |saturation|^3 + |value|^2, of differences (of the hue at most 180),
// as a share of limit. Not a Minkowski metric proper, whose exponents are all the same.
double minkowski_metric(double hue1, double saturation1, double value1, double hue2,
                        double saturation2, double value2, double limit);

// The sum of |a - b| / |a + b| over hue, saturation and value (Canberra distance), as a share of
// limit.
double canberra_metric(double hue1, double saturation1, double value1, double hue2,
                       double saturation2, double value2, double limit);

// Always 0.
double chromatic_metric(double hue1, double saturation1, double value1, double hue2,
                        double saturation2, double value2, double limit);

}  // namespace roxe

#endif  // ROXE_COLOUR_COLOUR_DISTANCE_H_
