#include "support/bench.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <map>
#include <random>
#include <vector>

#include "rows/tables.h"

namespace {

const roxe::RowKernels* rows_in_use = &roxe::kPlainRows;

std::vector<const roxe::RowKernels*> runnable_tables() {
  std::vector<const roxe::RowKernels*> tables;
  for (const roxe::RowTable& table : roxe::kRowTables)
    if (table.is_runnable()) tables.push_back(table.rows);
  return tables;
}

const bench::Size kSizes[] = {{"64x64", 64, 64},
                              {"1MP", 1152, 864},
                              {"12MP", 4000, 3000},
                              {"24MP", 6000, 4000},
                              {"100MP", 11552, 8664}};
const bench::Size& kMainSize = kSizes[2];

// Three octaves of value noise (smooth areas), sixty shapes (edges) and a little grain.
void paint_scene(const PixelArray& image) {
  std::mt19937 random(12345);
  const auto below = [&](int32_t n) {
    return static_cast<int32_t>(random() % static_cast<uint32_t>(n));
  };
  constexpr int32_t kGrid = 64;
  std::vector<float> lattice(3 * kGrid * kGrid * 3);
  for (float& value : lattice) value = static_cast<float>(below(65536)) / 65535.0f;
  const int32_t period[3] = {512, 128, 63};
  const float amplitude[3] = {170, 60, 26};

  for (int32_t y = 0; y < image.height; ++y) {
    uint8_t* row = image.pixels + static_cast<ptrdiff_t>(y) * image.rowBytes;
    for (int32_t x = 0; x < image.width; ++x) {
      float sum[3] = {0, 0, 0};
      for (int32_t octave = 0; octave < 3; ++octave) {
        const int32_t p = period[octave];
        const float fx = static_cast<float>(x % p) / static_cast<float>(p);
        const float fy = static_cast<float>(y % p) / static_cast<float>(p);
        const auto at = [&](int32_t dx, int32_t dy, int32_t channel) {
          const int32_t gx = (x / p + dx) % kGrid, gy = (y / p + dy) % kGrid;
          return lattice[static_cast<size_t>(((octave * kGrid + gy) * kGrid + gx) * 3 + channel)];
        };
        for (int32_t c = 0; c < 3; ++c) {
          const float top = at(0, 0, c) + fx * (at(1, 0, c) - at(0, 0, c));
          const float bottom = at(0, 1, c) + fx * (at(1, 1, c) - at(0, 1, c));
          sum[c] += amplitude[octave] * (top + fy * (bottom - top));
        }
      }
      for (int32_t c = 0; c < 3; ++c)
        row[3 * x + c] = static_cast<uint8_t>(
            std::clamp(sum[c] + static_cast<float>(below(9) - 4), 0.0f, 255.0f));
    }
  }
  for (int32_t shape = 0; shape < 60; ++shape) {
    const int32_t centre_x = below(image.width), centre_y = below(image.height);
    const int32_t radius = 1 + below(std::max(2, image.width / 12));
    const int32_t colour[3] = {below(256), below(256), below(256)};
    for (int32_t y = std::max(0, centre_y - radius); y < std::min(image.height, centre_y + radius);
         ++y)
      for (int32_t x = std::max(0, centre_x - radius); x < std::min(image.width, centre_x + radius);
           ++x) {
        const int32_t dx = x - centre_x, dy = y - centre_y;
        if (shape % 2 == 0 && dx * dx + dy * dy >= radius * radius) continue;
        uint8_t* pixel = image.pixels + static_cast<ptrdiff_t>(y) * image.rowBytes + 3 * x;
        for (int32_t c = 0; c < 3; ++c)
          pixel[c] = static_cast<uint8_t>((pixel[c] + 3 * colour[c]) / 4);
      }
  }
}

void paint_mask(const PixelArray& mask) {
  const float radius = static_cast<float>(std::min(mask.width, mask.height)) / 3;
  for (int32_t y = 0; y < mask.height; ++y)
    for (int32_t x = 0; x < mask.width; ++x) {
      const float dx = static_cast<float>(x - mask.width / 2);
      const float dy = static_cast<float>(y - mask.height / 2);
      const float inside = 1.5f - (dx * dx + dy * dy) / (radius * radius);
      mask.pixels[static_cast<ptrdiff_t>(y) * mask.rowBytes + x] =
          static_cast<uint8_t>(std::clamp(255 * inside, 0.0f, 255.0f));
    }
}

// Ordinary pages, aligned to a cache line, touched once.
PixelArray new_picture(uint32_t format, const bench::Size& size) {
  const int32_t row_bytes = size.width * (format == kRoxeFormatGray8 ? 1 : 3);
  const size_t bytes = static_cast<size_t>(row_bytes) * static_cast<size_t>(size.height);
  void* pixels = std::aligned_alloc(64, (bytes + 63) / 64 * 64);
  if (!pixels) std::abort();
  std::memset(pixels, 0, bytes);
  return {format, size.width, size.height, row_bytes, static_cast<uint8_t*>(pixels)};
}

// pixels: of a row, so that its time can be given by the pixel; else 0.
void measure(const std::string& name, const roxe::RowKernels& rows, std::function<void()> run,
             int32_t pixels = 0) {
  benchmark::RegisterBenchmark(name.c_str(), [&rows, run = std::move(run),
                                              pixels](benchmark::State& state) {
    rows_in_use = &rows;
    run();  // paints the pictures and warms the caches
    for (auto _ : state) {
      run();
      benchmark::ClobberMemory();
    }
    if (pixels > 0) state.counters["pixels"] = pixels;
  })->Unit(benchmark::kMillisecond);
}

}  // namespace

const roxe::RowKernels& roxe::Rows() { return *rows_in_use; }

namespace bench {

const Pictures& pictures(const Size& size) {
  static std::map<std::string, Pictures> made;
  const auto found = made.find(size.name);
  if (found != made.end()) return found->second;
  Pictures fresh = {new_picture(kRoxeFormatRGB24, size), new_picture(kRoxeFormatRGB24, size),
                    new_picture(kRoxeFormatGray8, size)};
  paint_scene(fresh.src);
  paint_mask(fresh.mask);
  return made[size.name] = fresh;
}

void operation(const std::string& name, std::function<void(const Pictures&)> run) {
  for (const Size& size : kSizes)
    for (const roxe::RowKernels* rows : runnable_tables()) {
      if (&size != &kMainSize && rows != runnable_tables().back()) continue;
      measure(name + "/" + rows->name + "/" + size.name, *rows,
              [run, &size] { run(pictures(size)); });
    }
}

void row(const std::string& name, int32_t pixels,
         std::function<void(const roxe::RowKernels&)> run) {
  for (const roxe::RowKernels* rows : runnable_tables())
    measure(
        "row." + name + "/" + rows->name + "/row", *rows, [run, rows] { run(*rows); }, pixels);
}

void peer(const std::string& name, std::function<void(const Pictures&)> run) {
  measure(name + "/peer/" + kMainSize.name, roxe::kPlainRows, [run] { run(pictures(kMainSize)); });
}

}  // namespace bench

int main(int argc, char** argv) {
  for (const bench::Size& size : kSizes)
    measure(std::string("memcpy/-/") + size.name, roxe::kPlainRows, [&size] {
      const bench::Pictures& p = bench::pictures(size);
      std::memcpy(p.dst.pixels, p.src.pixels,
                  static_cast<size_t>(p.src.rowBytes) * static_cast<size_t>(p.src.height));
    });
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  benchmark::RunSpecifiedBenchmarks();
  return 0;
}
