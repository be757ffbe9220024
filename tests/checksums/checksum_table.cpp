#include "checksums/checksum_table.h"

#include <functional>
#include <vector>

#include "checksums/digest.h"
#include "checksums/layout_rows.h"
#include "checksums/pictures.h"

namespace {

struct Case {
  std::string name;
  std::function<int32_t(PixelArray* src, PixelArray* dst)> run;
};

std::vector<Case> cases(const Operations& op) {
  std::vector<Case> all;
  const auto add = [&](const std::string& name, const auto& run) { all.push_back({name, run}); };

  for (const float angle : {0.0f, 0.017f, -0.05f, 0.127f, 0.785f, 1.4835f, 2.5f, -3.0f, 5.0f}) {
    add("rotate" + Joined(angle), [=](PixelArray* src, PixelArray* dst) {
      return op.rotate(src, src->width / 2, src->height / 2, angle, dst, dst->width / 2,
                       dst->height / 2);
    });
  }
  add("rotate off centre",
      [=](PixelArray* src, PixelArray* dst) { return op.rotate(src, -3, 7, 0.3f, dst, 11, -2); });
  for (const Quad line : {Quad{0, 0, 100, 3, 0, 0, 0, 0}, Quad{5, 90, 2, 1, 0, 0, 0, 0},
                          Quad{9, 9, -80, 70, 0, 0, 0, 0}})
    add("straighten" + Joined(line.x0, line.y0, line.x1, line.y1),
        [=](PixelArray* src, PixelArray* dst) {
          return op.straighten(src, line.x0, line.y0, line.x1, line.y1, dst);
        });
  for (const int32_t inset : {0, 1, 5, 12}) {
    const auto corners = [=](const PixelArray* src) {
      return Quad{inset,
                  inset / 2,
                  src->width - 1,
                  inset,
                  src->width - 2 - inset,
                  src->height - 1,
                  inset / 3,
                  src->height - 2 - inset / 2};
    };
    add("affine" + Joined(inset), [=](PixelArray* src, PixelArray* dst) {
      Quad quad = corners(src);
      return op.affine(src, dst, &quad, nullptr, PixelRect{0, 0, dst->width, dst->height});
    });
    add("affine onto corners" + Joined(inset), [=](PixelArray* src, PixelArray* dst) {
      Quad quad = corners(src);
      const Quad onto = {-2, -3, dst->width + 1, 1, dst->width, dst->height, 3, dst->height - 1};
      return op.affine(src, dst, &quad, &onto, PixelRect{-5, -5, dst->width - 1, dst->height + 9});
    });
    add("perspective" + Joined(inset), [=](PixelArray* src, PixelArray* dst) {
      Quad quad = corners(src);
      return op.perspective(src, dst, &quad, 0, 0, PixelRect{1, 2, dst->width, dst->height});
    });
  }
  for (const int32_t radius : {0, 2, 3, 8, 21, 100, 400}) {
    add("soft focus" + Joined(radius), [=](PixelArray* src, PixelArray* dst) {
      return op.soft_focus(src, dst, nullptr, radius, 0);
    });
    add("soft focus masked" + Joined(radius), [=](PixelArray* src, PixelArray* dst) {
      Picture mask = picture("mask", kRoxeFormatGray8, src->width, src->height, 3,
                             [](int32_t x, int32_t y, int32_t) {
                               return static_cast<uint8_t>((x / 9 + y / 7) % 2 ? 255 : 4 * x);
                             });
      const PixelArray record = record_of(mask);
      return op.soft_focus(src, dst, &record, radius, radius / 2);
    });
  }
  const uint32_t references[][3] = {{60, 90, 180}, {255, 0, 0}, {128, 128, 128}, {3, 2, 1}};
  for (const auto& colour : references) {
    const uint32_t blue = colour[0], green = colour[1], red = colour[2];
    for (const uint32_t tolerance : {0u, 40u, 80u, 200u}) {
      const std::string parameters = Joined(blue, green, red, tolerance);
      add("replace colour" + parameters, [=](PixelArray* src, PixelArray* dst) {
        return op.replace_colour(src, dst, blue, green, red, tolerance, 75, -20, 30);
      });
      add("replace colour mask" + parameters, [=](PixelArray* src, PixelArray* dst) {
        return op.replace_colour_mask(src, dst, blue, green, red, tolerance);
      });
      add("tint" + parameters, [=](PixelArray* src, PixelArray* dst) {
        return op.tint(src, dst, blue, green, red, tolerance);
      });
    }
  }
  add("tint mask",
      [=](PixelArray* src, PixelArray* dst) { return op.tint_mask(src, dst, 60, 90, 180, 80); });
  for (const int32_t temperature : {-100, -37, 0, 30, 100})
    for (const int32_t tint : {-60, 0, 45})
      add("temperature" + Joined(temperature, tint), [=](PixelArray* src, PixelArray* dst) {
        return op.temperature(src, dst, temperature, tint);
      });
  add("auto gamma",
      [=](PixelArray* src, PixelArray* dst) { return op.auto_gamma(src, dst, nullptr); });
  add("auto gamma in a region", [=](PixelArray* src, PixelArray* dst) {
    const PixelRect region = {-4, 0, (src->width + 1) / 2, (src->height + 1) / 2};
    return op.auto_gamma(src, dst, &region);
  });
  for (const uint32_t shadow : {0u, 10u, 60u})
    for (const uint32_t highlight : {0u, 35u, 100u})
      for (const int32_t midtone : {-50, 0, 25})
        add("shadow highlight" + Joined(shadow, highlight, midtone),
            [=](PixelArray* src, PixelArray* dst) {
              return op.shadow_highlight(src, dst, shadow, highlight, midtone);
            });
  for (const int32_t level : {0, 3, 6})
    for (const int32_t steps : {-7, 0, 2, 40})
      add("variations" + Joined(steps, level), [=](PixelArray* src, PixelArray* dst) {
        return op.variations(src, dst, steps, 1, -steps, 1, level);
      });
  return all;
}

}  // namespace

std::string ChecksumTable(const Operations& operations) {
  std::string table;
  std::vector<Picture> sources = pictures(), grounds;
  for (const Picture& source : sources)
    grounds.push_back(picture("", kRoxeFormatRGB24, source.record.width, source.record.height, 4,
                              [](int32_t x, int32_t y, int32_t c) {
                                return static_cast<uint8_t>(17 * x + 31 * y + 101 * c);
                              }));
  for (const Case& one : cases(operations)) {
    for (size_t i = 0; i < sources.size(); ++i) {
      Picture target = grounds[i];
      PixelArray src = record_of(sources[i]), dst = record_of(target);
      const int32_t status = one.run(&src, &dst);
      Digest digest;
      digest.add(target.bytes);
      table += ChecksumLine(one.name, sources[i].name, status, digest);
    }
  }
  return table + LayoutRows(operations);
}
