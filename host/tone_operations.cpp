#include "drawing.h"
#include "errors.h"
#include "operation.h"
#include "option_table.h"
#include "text.h"

namespace host {
namespace {

class AutoGamma : public Operation {
 public:
  void add_options(Options& options) override {
    options
        .text("--region", "X,Y,W,H", "judge the exposure by this part of the picture",
              [this](const std::string& text) { set_region(text); })
        .otherwise = "all of it";
  }

  Outcome apply(Picture& picture, Colour) const override {
    if (region_.empty()) {
      const bool changed = draw_in_place(picture, [](const PixelArray* from, PixelArray* to) {
        return roxeAutoGamma(from, to, nullptr);
      });
      return {"corrected the exposure", changed};
    }
    const int32_t left = region_[0].pixel(picture.width());
    const int32_t top = region_[1].pixel(picture.height());
    const int64_t right = int64_t{left} + region_[2].count(picture.width());
    const int64_t bottom = int64_t{top} + region_[3].count(picture.height());
    if (right > picture.width() || bottom > picture.height())
      throw UsageError("--region " + region_text_ + " reaches outside the picture of " +
                       picture.size_text() + " pixels");
    const PixelRect rect = {left, top, static_cast<int32_t>(right), static_cast<int32_t>(bottom)};
    const bool changed = draw_in_place(picture, [&](const PixelArray* from, PixelArray* to) {
      return roxeAutoGamma(from, to, &rect);
    });
    return {"corrected the exposure by the region " + region_text_, changed};
  }

 private:
  void set_region(const std::string& text) {
    region_text_ = text;
    region_ = coordinates(text, 4, "--region");
    if (region_[0].value < 0 || region_[1].value < 0 || region_[2].value <= 0 ||
        region_[3].value <= 0)
      throw UsageError("--region needs a place inside the picture and a size of at least 1,1");
  }

  std::string region_text_;
  std::vector<Coordinate> region_;
};

class ShadowHighlight : public Operation {
 public:
  void add_options(Options& options) override {
    options.whole_number("--shadow", shadow_, 0, 100, "opens the shadows, 0 to 100");
    options.whole_number("--highlight", highlight_, 0, 100, "tames the highlights, 0 to 100");
    options.whole_number("--midtone", midtone_, -100, 100, "contrast of the midtones, -100 to 100");
  }

  Outcome apply(Picture& picture, Colour) const override {
    const bool changed = draw_in_place(picture, [&](const PixelArray* from, PixelArray* to) {
      return roxeShadowHighlight(from, to, static_cast<uint32_t>(shadow_),
                                 static_cast<uint32_t>(highlight_), midtone_);
    });
    return {"opened shadows by " + std::to_string(shadow_) + ", tamed highlights by " +
                std::to_string(highlight_) + ", midtones " + std::to_string(midtone_),
            changed};
  }

 private:
  int32_t shadow_ = 0, highlight_ = 0, midtone_ = 0;
};

class Variations : public Operation {
 public:
  void add_options(Options& options) override {
    const auto steps = [&options](const char* name, int32_t& count, const char* meaning) {
      options.whole_number(name, count, -1000, 1000, meaning);
    };
    steps("--red", red_, "steps of red to take away; negative: to add");
    steps("--green", green_, "steps of green to take away; negative: to add");
    steps("--blue", blue_, "steps of blue to take away; negative: to add");
    steps("--dark", dark_, "steps to darken; negative: to lighten");
    options.whole_number("--level", level_, 0, 6, "size of a step, 0 (fine) to 6 (coarse)");
  }

  bool by_pixels() const override { return true; }

  Outcome apply(Picture& picture, Colour) const override {
    const bool changed = draw_in_place(picture, [&](const PixelArray* from, PixelArray* to) {
      return roxeVariations(from, to, red_, green_, blue_, dark_, level_);
    });
    return {"took away red " + std::to_string(red_) + ", green " + std::to_string(green_) +
                ", blue " + std::to_string(blue_) + ", light " + std::to_string(dark_),
            changed};
  }

 private:
  int32_t red_ = 0, green_ = 0, blue_ = 0, dark_ = 0, level_ = 2;
};

}  // namespace

std::vector<OperationEntry> tone_operations() {
  return {
      {"auto-gamma", "Correct the exposure automatically", make_operation<AutoGamma>},
      {"shadow-highlight", "Open shadows and tame highlights", make_operation<ShadowHighlight>},
      {"variations",
       "Shift the colour balance and brightness in steps; several turn white into 254",
       make_operation<Variations>},
  };
}

}  // namespace host
