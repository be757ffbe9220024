#include <memory>

#include <webp/decode.h>
#include <webp/encode.h>
#include <webp/mux.h>

#include "codecs.h"
#include "errors.h"

namespace host {
namespace {

constexpr float kDefaultQuality = 95;
constexpr int kLossless = 2;  // of the features' format

struct MuxDeleter {
  void operator()(WebPMux* mux) const { WebPMuxDelete(mux); }
};
using Mux = std::unique_ptr<WebPMux, MuxDeleter>;

Bytes chunk(const WebPMux* mux, const char* name) {
  WebPData data = {};
  if (WebPMuxGetChunk(mux, name, &data) != WEBP_MUX_OK) return {};
  return Bytes(data.bytes, data.bytes + data.size);
}

void read_metadata(const Bytes& file, Metadata& metadata, Notes& notes) {
  const WebPData data = {file.data(), file.size()};
  const Mux mux(WebPMuxCreate(&data, 0));
  if (!mux) return notes.push_back("its EXIF, XMP and colour profile are damaged and left out");
  metadata.icc = chunk(mux.get(), "ICCP");
  metadata.xmp = chunk(mux.get(), "XMP ");
  metadata.exif = chunk(mux.get(), "EXIF");
}

void lay_over(const uint8_t* from, Colour background, Picture& picture) {
  for (int32_t y = 0; y < picture.height(); ++y) {
    uint8_t* to = picture.row(y);
    for (int32_t x = 0; x < picture.width(); ++x, to += 3, from += 4) {
      const int opacity = from[3];
      const auto over = [&](int value, int behind) {
        return static_cast<uint8_t>((value * opacity + behind * (255 - opacity) + 127) / 255);
      };
      to[0] = over(from[0], background.blue);
      to[1] = over(from[1], background.green);
      to[2] = over(from[2], background.red);
    }
  }
}

struct Encoder {
  WebPPicture picture;
  WebPMemoryWriter writer;
  Encoder() {
    WebPPictureInit(&picture);
    WebPMemoryWriterInit(&writer);
    picture.writer = WebPMemoryWrite;
    picture.custom_ptr = &writer;
  }
  ~Encoder() {
    WebPPictureFree(&picture);
    WebPMemoryWriterClear(&writer);
  }
};

}  // namespace

std::string webp_library() {
  const int version = WebPGetEncoderVersion();
  return "libwebp " + std::to_string(version >> 16) + "." + std::to_string(version >> 8 & 255) +
         "." + std::to_string(version & 255);
}

Decoded decode_webp(const Bytes& file, const ReadSettings& settings, Notes& notes) {
  WebPBitstreamFeatures features;
  if (WebPGetFeatures(file.data(), file.size(), &features) != VP8_STATUS_OK)
    throw Failure("the WebP is damaged or incomplete");
  if (features.has_animation) throw Failure("is an animated WebP, which cannot be edited");
  Picture picture(features.width, features.height);
  const auto bytes =
      static_cast<size_t>(picture.row_bytes()) * static_cast<size_t>(picture.height());
  bool decoded = false;
  if (features.has_alpha) {
    const size_t with_alpha = bytes / 3 * 4;
    const auto pixels = std::make_unique_for_overwrite<uint8_t[]>(with_alpha);
    decoded = WebPDecodeBGRAInto(file.data(), file.size(), pixels.get(), with_alpha,
                                 4 * features.width) != nullptr;
    if (decoded) lay_over(pixels.get(), settings.background, picture);
    notes.push_back("its transparency is replaced by the background colour");
  } else {
    decoded = WebPDecodeBGRInto(file.data(), file.size(), picture.row(0), bytes,
                                static_cast<int>(picture.row_bytes())) != nullptr;
  }
  if (!decoded) throw Failure("the WebP is damaged or incomplete");
  read_metadata(file, picture.metadata, notes);
  picture.metadata.lossless = features.format == kLossless;
  return {std::move(picture), FileFormat::kWebp,
          features.format == kLossless ? "WebP, lossless, 8 bits" : "WebP, 8 bits"};
}

Bytes encode_webp(const Picture& picture, const Metadata& metadata, const WriteSettings& settings,
                  Notes& notes) {
  if (picture.width() > WEBP_MAX_DIMENSION || picture.height() > WEBP_MAX_DIMENSION)
    throw Failure("a WebP cannot hold " + picture.size_text() + " pixels, only 16383 a side");
  note_jpeg_blocks(metadata, "a WebP", notes);
  note_png_chunks(metadata, "a WebP", notes);
  WebPConfig config;
  WebPConfigInit(&config);
  config.lossless = metadata.lossless && !settings.quality;
  config.quality = settings.quality ? static_cast<float>(*settings.quality) : kDefaultQuality;
  Encoder encoder;
  encoder.picture.width = picture.width();
  encoder.picture.height = picture.height();
  encoder.picture.use_argb = config.lossless;
  if (!WebPPictureImportBGR(&encoder.picture, picture.row(0),
                            static_cast<int>(picture.row_bytes())) ||
      !WebPEncode(&config, &encoder.picture))
    throw Failure("the WebP cannot be made (libwebp's error " +
                  std::to_string(encoder.picture.error_code) + ")");

  const WebPData image = {encoder.writer.mem, encoder.writer.size};
  const Mux mux(WebPMuxNew());
  bool made = mux && WebPMuxSetImage(mux.get(), &image, 0) == WEBP_MUX_OK;
  const auto add = [&](const char* name, const Bytes& block) {
    const WebPData data = {block.data(), block.size()};
    if (!block.empty()) made &= WebPMuxSetChunk(mux.get(), name, &data, 0) == WEBP_MUX_OK;
  };
  if (made && profile_fits(metadata.icc, false, notes)) add("ICCP", metadata.icc);
  if (made) add("EXIF", metadata.exif);
  if (made) add("XMP ", metadata.xmp);
  WebPData assembled = {};
  made = made && WebPMuxAssemble(mux.get(), &assembled) == WEBP_MUX_OK;
  if (!made) throw Failure("the WebP cannot be made");
  Bytes file(assembled.bytes, assembled.bytes + assembled.size);
  WebPDataClear(&assembled);
  return file;
}

}  // namespace host
