// The compiler's loop hint for rows that are the same or disjoint: no iteration depends on another.
#ifndef ROXE_ROWS_LOOP_HINT_H_
#define ROXE_ROWS_LOOP_HINT_H_

#if defined(__clang__)
#define ROXE_LANES_INDEPENDENT _Pragma("clang loop vectorize(assume_safety)")
#else
#define ROXE_LANES_INDEPENDENT _Pragma("GCC ivdep")
#endif

#endif  // ROXE_ROWS_LOOP_HINT_H_
