#include "cmyk.h"

#include <lcms2.h>

namespace host {
namespace {

class Transform : public CmykToSrgb {
 public:
  explicit Transform(cmsHTRANSFORM transform) : transform_(transform) {}
  ~Transform() override { cmsDeleteTransform(transform_); }
  void convert(const uint8_t* from, uint8_t* to, int32_t count) const override {
    cmsDoTransform(transform_, from, to, static_cast<cmsUInt32Number>(count));
  }

 private:
  cmsHTRANSFORM transform_;
};

}  // namespace

std::unique_ptr<CmykToSrgb> make_cmyk_to_srgb(const Bytes& icc, bool inverted) {
  cmsHPROFILE profile = cmsOpenProfileFromMem(icc.data(), static_cast<cmsUInt32Number>(icc.size()));
  if (!profile) return nullptr;
  cmsHTRANSFORM transform = nullptr;
  if (cmsGetColorSpace(profile) == cmsSigCmykData) {
    cmsHPROFILE srgb = cmsCreate_sRGBProfile();
    transform = cmsCreateTransform(profile, inverted ? TYPE_CMYK_8_REV : TYPE_CMYK_8, srgb,
                                   TYPE_BGR_8, INTENT_PERCEPTUAL, 0);
    cmsCloseProfile(srgb);
  }
  cmsCloseProfile(profile);
  return transform ? std::make_unique<Transform>(transform) : nullptr;
}

std::string colour_library() {
  const int version = cmsGetEncodedCMMversion();  // 2140 is 2.14
  return "lcms2 " + std::to_string(version / 1000) + "." + std::to_string(version % 1000 / 10);
}

}  // namespace host
