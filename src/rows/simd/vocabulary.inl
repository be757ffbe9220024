// What every set gives, said once; included after the functions of a set, so that compilers hold
// them to it. ByteMask, WordMask and FloatMask are its masks: one truth value a lane, with & | ^
// and without(). Some functions are shared between sets in the other files of this folder.

// ---- within blocks
// a - b of the bytes that interleaving takes from the low, or the high, halves; in signed words.
static Words low_differences(Bytes a, Bytes b);
static Words high_differences(Bytes a, Bytes b);
// Half as wide, saturating: signed words to 0 ... 255, signed dwords to 0 ... 65535 or to
// -32768 ... 32767. The lanes of a fill the first half of each block, those of b the last.
static Bytes pack(Words a, Words b);
static Words pack(SignedDwords a, SignedDwords b);
static Words pack_signed(SignedDwords a, SignedDwords b);
// The bytes of each block of table at an index of 0 ... 15, and 0 for one of 128 ... 143. Beyond
// these sets differ: only a set's own file may use what its shuffle gives.
static Bytes shuffle(Bytes table, Bytes index);
// The same with 0 for every index from 16 on.
static Bytes shuffle_or_zero(Bytes table, Bytes index);
// Sixteen bytes in every block.
static Bytes in_all_blocks(const uint8_t* p);
// Block b.
template <int b>
static Block block(Bytes v);
// Block j to p + j * step.
static void store_blocks(uint8_t* p, ptrdiff_t step, Bytes v);

// ---- arithmetic
static Bytes add_saturating(Bytes a, Bytes b);
static Bytes subtract_saturating(Bytes a, Bytes b);
static SignedWords add_saturating(SignedWords a, SignedWords b);
// The upper words of the products.
static Words mul_high(Words a, Words b);
static SignedWords mul_high(SignedWords a, SignedWords b);
// a[2 i] * b[2 i] + a[2 i + 1] * b[2 i + 1] of signed words.
static Dwords pair_sums(Words a, Words b);
// a[2 i] * b[2 i] + a[2 i + 1] * b[2 i + 1] of bytes a and signed bytes b, in signed words; sums
// that do not fit differ.
static Words byte_pair_sums(Bytes a, Bytes b);
static bool any_above(Dwords a, Dwords b);
// Where one is not a number, or zeros differ in sign, sets differ. (Compilers make two instructions
// of the operators.)
static Floats min(Floats a, Floats b);
static Floats max(Floats a, Floats b);
static Floats floor(Floats a);

// ---- comparisons and choices
// Besides these, equal and at_most of bytes, words and floats, and greater of signed words and
// floats give masks.
static bool all(ByteMask m);
static bool all(FloatMask m);
static bool any(ByteMask m);
static bool any(FloatMask m);
static ByteMask mask_of(Bytes all_ones_or_zero);
// a where the mask says so, else b.
static Bytes select(ByteMask where, Bytes a, Bytes b);
static Words select(WordMask where, Words a, Words b);

// ---- conversions; first and last are the halves of a vector, not of its blocks
static Floats to_floats(Doubles first, Doubles last);
static Doubles first_doubles(Floats v);
static Doubles last_doubles(Floats v);
// Toward zero. What does not fit gives 0 or one of the ends.
static SignedDwords truncate(Floats a);
static SignedDwords truncate_small(Floats a);  // of 0 ... 8388607
// To the nearest, of two to the even one; of -4194304 ... 4194303.
static SignedDwords rounded(Floats a);
static SignedDwords widen_first(SignedWords v);
static SignedDwords widen_last(SignedWords v);

// ---- tables
// ByteTable: 256 entries. ShortTable: the first entries of a table; 0 beyond, where the table must
// hold 0 as well.
static ByteTable byte_table(const uint8_t* table);
static Bytes look_up(const ByteTable& table, Bytes index);
static ShortTable short_table(const uint8_t* table, int32_t entries);
static Bytes look_up(const ShortTable& table, Bytes index);
// HalfTable: 128 entries, for indices below 128. With whole tables in its place draw_selection
// takes 0.01 ns a pixel longer with AVX-512, 2 %.
static HalfTable half_table(const uint8_t* table);
static Bytes look_up(const HalfTable& table, Bytes index);
// kWideTables: whether a look-up in a ByteTable takes less than a load for each byte. look_up_bgr
// is then wide: it pays to sort the channels first. With AVX2 it takes 0.54 ns a pixel instead of
// 0.86. Where the look-up is such loads, a wide one would not change the time of variations with
// SSE4.1 and would take 21 ms instead of 13 in WebAssembly. (look_up, which sorts nothing, is wide
// in all sets.)
// kQuickTables: whether a look-up takes a few instructions only, so that tables replace arithmetic
// and loads, too. With AVX-512 draw_selection then takes 0.58 ns a pixel instead of 1.02,
// replace_colour 1.17 instead of 1.59, accent_colour 0.67 instead of 1.14, balance_white 1.16
// instead of 2.25. With NEON these rows would take 3 to 11 % more instructions, and llvm-mca
// expects them to take 4 to 62 % more cycles on a Neoverse N1, up to 15 % more and once 1 % fewer
// on an M1.
static_assert(kWideTables || !kQuickTables);
// kPlainSimpleRows: whether box_row_16, box_row_32 and intensities are the plain rows, of which the
// compiler makes fewer instructions than of the wide ones.
// FloatTable: 256 or 512 floats, of which those from 256 on are equal. 4 * kDwords entries are
// looked up at a time, in two steps: keep stores their indices, of which vector(k) gives the
// kDwords from number k on; at(k) of what look_up then gives are the kDwords entries from there on.
static FloatTable float_table(const float* table, int32_t entries);
template <class F>
static void keep(Indices& indices, const F& vector);
static FoundFloats look_up(const FloatTable& table, const Indices& indices);
// ---- pixels of three bytes
static Planes load_planes(const uint8_t* bgr);
static void store_planes(uint8_t* bgr, const Planes& planes);
// Of sets of one and two blocks.
static PixelFloats load_pixels(const uint8_t* bgr);

// ---- sampling between pixels
// The shuffle that makes Corners of two rows.
static Bytes corner_order();
// The corners of pixels side by side, the first at upper. Of sets of two and four blocks: rotate
// takes 0.04 ns less for each pixel of a level walk with AVX2, 0.12 with AVX-512. With vectors of
// one block it would gain nothing.
static Corners corners_side_by_side(const uint8_t* upper, ptrdiff_t stride);
// Weights are the second bytes of positions in 16.16.
static CornerWeights weights_of(Dwords x, Dwords y);
// Mixes pixel k of each block; of four such vectors bytes_of_mixes makes bytes, which store_mixes
// writes as kDwords pixels. store_mixes_and_4_bytes may write the next four bytes, too. The set's
// own mix_of(i) says which byte of a block of mixes is byte i of its four pixels.
template <int k>
static Dwords mix_corners(Bytes corners, const CornerWeights& weights);
static Bytes bytes_of_mixes(Dwords p0, Dwords p1, Dwords p2, Dwords p3);
static void store_mixes(uint8_t* dst, Bytes mixes);
static void store_mixes_and_4_bytes(uint8_t* dst, Bytes mixes);
// Eight bytes at p + offset, for one half of kDwords offsets; both halves give the bytes of pairs
// that begin at the third of them.
static Bytes half_of_pairs(const uint8_t* p, const int32_t* offsets, int32_t half);
static PixelPairs bytes_of_pairs(Bytes first_half, Bytes last_half);
// a + t * (b - a) with one rounding, of bytes and of two such results. Where t is a fraction of a
// position of at least 1. The first may be multiplied by a power of two, the second is cut to a
// byte.
static Floats mix_bytes(Dwords a, Dwords b, Floats t);
static Dwords mix_to_bytes(Floats a, Floats b, Floats t);
// weight * byte + c with one rounding, where the exact sum has at most 53 bits.
static Floats fused_with_byte(float weight, Floats byte, Floats c);
// The rows of a tile, and row r of them stored in 24 bytes.
static TileRows rows_of_tile(const Dwords (&tile)[kTileVectors]);
static void store_row(uint8_t* dst, const TileRows& rows, int32_t r);

// ---- columns of 32 lanes (rows.h)
// in - out of the bytes of a column, in signed words in the order of lanes.
static LaneWords lane_differences(const uint8_t* in, const uint8_t* out);
// Pair i of the 32 dwords at p.
static DwordPair load_lanes(const uint32_t* p, int32_t i, InOrder);
static DwordPair load_lanes(const uint32_t* p, int32_t i, Interleaved);
static void store_lanes(uint32_t* p, int32_t i, DwordPair v, InOrder);
static void store_lanes(uint32_t* p, int32_t i, DwordPair v, Interleaved);
// The top bytes of a column whose pair i is pairs(i).
template <class F, class Order>
static void store_top_bytes(uint8_t* dst, const F& pairs, Order order);
