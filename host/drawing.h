// From a picture through an operation of the library to the picture that takes its place.
#ifndef ROXE_HOST_DRAWING_H_
#define ROXE_HOST_DRAWING_H_

#include <functional>

#include "option_table.h"
#include "picture.h"
#include "text.h"

namespace host {

// What a geometric operation gets for a source: the picture alone, or with the pixels at its edges
// repeated once around. Positions between the outermost pixels and the edge are then drawn too.
enum class Edges { kRepeat, kKeep };

// By how much positions in the source move right and down.
inline int32_t shift_of(Edges edges) { return edges == Edges::kRepeat ? 1 : 0; }

void add_edges(Options& options, Edges& edges);

// Receives the source and a destination to draw on, returns the library's status.
using Call = std::function<int32_t(const PixelArray* from, PixelArray* to)>;

// Draws on a new picture of the given size and background, which takes the place of the old one.
// Returns whether that changed the size or any pixel. Throws Failure where the library gives up.
bool draw_into(Picture& picture, Size size, Colour background, const Call& call,
               Edges edges = Edges::kKeep);

// The same where the result is written over the source.
bool draw_in_place(Picture& picture, const Call& call);

}  // namespace host

#endif  // ROXE_HOST_DRAWING_H_
