// The rows of the table of checksums that only C and C++ ask for: sizes from 1 x 1 to 257 x 129,
// long rows, pictures of other formats and of different sizes, pictures that share memory; and
// every parameter over its range and beyond it.
#ifndef ROXE_TESTS_CHECKSUMS_LAYOUT_ROWS_H_
#define ROXE_TESTS_CHECKSUMS_LAYOUT_ROWS_H_

#include <string>

#include "checksums/checksum_table.h"

// FNV-1a here covers the numbers that an operation gives beside its status, then the source, then
// the destination.
std::string LayoutRows(const Operations& operations);

#endif  // ROXE_TESTS_CHECKSUMS_LAYOUT_ROWS_H_
