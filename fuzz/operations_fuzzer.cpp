// A sequence of operations on a handful of pictures that lie anywhere in one block of memory and
// may overlap: the library in one block, the literal references in another, which must stay equal
// byte for byte. The input chooses everything, also which allocation of a call fails; such a call
// only has to end well.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "checksums/checksum_table.h"
#include "frame/platform_memory.h"

namespace {

int64_t until_failure, live_blocks;

void expect(bool holds, const char* what) {
  if (holds) return;
  std::fprintf(stderr, "does not hold: %s\n", what);
  std::abort();
}

// The input as a source of numbers; zeros when it is used up.
class Input {
 public:
  Input(const uint8_t* data, size_t size) : data_(data), size_(size) {}
  bool empty() const { return size_ == 0; }
  uint8_t byte() {
    if (empty()) return 0;
    --size_;
    return *data_++;
  }
  int32_t below(int32_t n) { return (byte() | byte() << 8) % n; }
  int32_t whole() {
    uint32_t bits = 0;
    for (int i = 0; i < 4; ++i) bits = bits << 8 | byte();
    return static_cast<int32_t>(bits);
  }
  // Mostly a number of the intended range, else any.
  int32_t amount(int32_t low, int32_t high) {
    return byte() % 8 == 0 ? whole() : low + below(high - low + 1);
  }
  float real() {
    if (byte() % 4 != 0) return static_cast<float>(below(2000) - 1000) / 250.0f;
    const int32_t bits = whole();
    float value;
    std::memcpy(&value, &bits, sizeof value);
    return value;
  }

 private:
  const uint8_t* data_;
  size_t size_;
};

// A record of a verified format whose rows lie in the block.
PixelArray record_in(Input& input, size_t size, size_t* offset) {
  PixelArray record = {};
  record.format = input.byte() % 4 == 0 ? kRoxeFormatGray8 : kRoxeFormatRGB24;
  const int32_t channels = record.format == kRoxeFormatGray8 ? 1 : 3;
  record.width = 1 + input.below(input.byte() % 4 == 0 ? 200 : 24);
  record.height = 1 + input.below(24);
  record.rowBytes = channels * record.width + (input.byte() % 2 == 0 ? 0 : input.below(9));
  // The regions of auto gamma may reach into the padding of the last row, too.
  const size_t taken = static_cast<size_t>(record.rowBytes) * static_cast<size_t>(record.height);
  *offset = static_cast<size_t>(input.below(65535)) % (size - taken + 1);
  return record;
}

// Mostly a quadrilateral whose corners lie near those of the picture, else any points.
Quad quad_of(Input& input, const PixelArray& picture) {
  if (input.byte() % 4 != 0) {
    const auto x = [&] { return input.below(picture.width / 3 + 1); };
    const auto y = [&] { return input.below(picture.height / 3 + 1); };
    const int32_t right = picture.width, bottom = picture.height;
    return {x(), y(), right - x(), y(), right - x(), bottom - y(), x(), bottom - y()};
  }
  const auto x = [&] { return input.amount(-3, picture.width + 3); };
  const auto y = [&] { return input.amount(-3, picture.height + 3); };
  return {x(), y(), x(), y(), x(), y(), x(), y()};
}

// What one call is given besides its pictures.
struct Call {
  int32_t operation, numbers[8];
  float angle;
  bool has_mask, has_region, has_target;
  Quad quad, target;
  PixelRect rect;
};

Call call_of(Input& input, const PixelArray& src, const PixelArray& dst) {
  Call call = {};
  call.operation = input.below(13);
  for (int32_t& number : call.numbers) number = input.amount(-100, 300);
  call.angle = input.real();
  const uint8_t flags = input.byte();
  call.has_mask = flags & 1, call.has_region = flags & 2, call.has_target = flags & 4;
  call.quad = quad_of(input, src);
  call.target = quad_of(input, dst);
  call.rect = {input.amount(-9, 30), input.amount(-9, 30), input.amount(-9, 60),
               input.amount(-9, 60)};
  return call;
}

int32_t run(const Operations& op, Call& call, PixelArray* src, PixelArray* dst, PixelArray* mask) {
  const int32_t* n = call.numbers;
  const auto u = [n](int i) { return static_cast<uint32_t>(n[i]); };
  switch (call.operation) {
    case 0:
      return op.rotate(src, n[0], n[1], call.angle, dst, n[2], n[3]);
    case 1:
      return op.straighten(src, n[0], n[1], n[2], n[3], dst);
    case 2:
      return op.affine(src, dst, &call.quad, call.has_target ? &call.target : nullptr, call.rect);
    case 3:
      return op.perspective(src, dst, &call.quad, n[0], n[1], call.rect);
    case 4:
      return op.soft_focus(src, dst, call.has_mask ? mask : nullptr, n[0], n[1]);
    case 5:
      return op.replace_colour(src, dst, u(0), u(1), u(2), u(3), n[4], n[5] % 12850, n[6] % 12850);
    case 6:
      return op.replace_colour_mask(src, dst, u(0), u(1), u(2), u(3));
    case 7:
      return op.tint(src, dst, u(0), u(1), u(2), u(3));
    case 8:
      return op.tint_mask(src, dst, u(0), u(1), u(2), u(3));
    case 9:
      return op.temperature(src, dst, n[0], n[1]);
    case 10:
      return op.auto_gamma(src, dst, call.has_region ? &call.rect : nullptr);
    case 11:
      return op.shadow_highlight(src, dst, u(0), u(1), n[2]);
    default:
      return op.variations(src, dst, n[0], n[1], n[2], n[3], n[4]);
  }
}

}  // namespace

namespace roxe {

void* platform_allocate(size_t size) {
  if (--until_failure == 0) return nullptr;
  void* block = std::calloc(1, size);
  live_blocks += block != nullptr;
  return block;
}

void platform_release(void* block) {
  live_blocks -= block != nullptr;
  std::free(block);
}

}  // namespace roxe

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  Input input(data, size);
  constexpr size_t kBlock = 20000;  // more than the largest picture
  std::vector<uint8_t> library(kBlock);
  uint32_t state = static_cast<uint32_t>(input.whole());
  for (uint8_t& byte : library) {
    state = state * 1664525u + 1013904223u;
    byte = static_cast<uint8_t>(state >> 24);
  }
  std::vector<uint8_t> reference = library;

  for (int32_t steps = 0; steps < 6 && !input.empty(); ++steps) {
    PixelArray records[3], twins[3];
    for (int32_t i = 0; i < 3; ++i) {
      size_t offset;
      records[i] = record_in(input, kBlock, &offset);
      if (i > 0 && input.byte() % 4 == 0) {  // the same picture, or the same size elsewhere
        const size_t same = static_cast<size_t>(records[0].pixels - library.data());
        const uint32_t format = i == 2 ? uint32_t{kRoxeFormatGray8} : records[0].format;
        records[i] = records[0];
        records[i].format = format;
        if (input.byte() % 2 == 0) offset = same;
        offset = std::min(offset, kBlock - static_cast<size_t>(records[i].rowBytes) *
                                               static_cast<size_t>(records[i].height));
      }
      records[i].pixels = library.data() + offset;
      twins[i] = records[i];
      twins[i].pixels = reference.data() + offset;
    }
    const Call call = call_of(input, records[0], records[1]);
    const int64_t fail_at = input.byte() % 4 == 0 ? 1 + input.below(8) : 0;

    Call by_library = call, by_reference = call;
    until_failure = fail_at;
    const int32_t status = run(kLibrary, by_library, &records[0], &records[1], &records[2]);
    expect(live_blocks == 0, "every block is released");
    expect(status >= 0 && status <= 4, "the result is one that the header knows");
    if (fail_at > 0) {
      std::copy(library.begin(), library.end(), reference.begin());
      continue;
    }
    const int32_t expected = run(kReference, by_reference, &twins[0], &twins[1], &twins[2]);
    expect(status == expected, "the result is that of the reference");
    expect(std::memcmp(&by_library.quad, &by_reference.quad, sizeof(Quad)) == 0,
           "the corners are those of the reference");
    expect(library == reference, "the bytes are those of the reference");
  }
  return 0;
}
