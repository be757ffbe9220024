// Masks that are vectors of all ones and zeros.
using ByteMask = Bytes;
using WordMask = SignedWords;
using FloatMask = SignedDwords;
static ByteMask mask_of(Bytes all_ones_or_zero) { return all_ones_or_zero; }
static Words only(WordMask where, Words a) { return a & (Words)where; }
