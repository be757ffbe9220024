#define G_LOG_DOMAIN "roxe"

#include "vips/operation_class.h"

#include <atomic>
#include <cassert>
#include <memory>
#include <new>
#include <string>
#include <utility>

#include <vips/vips.h>

#include "errors.h"
#include "shared/layers.h"
#include "shared/request.h"
#include "vips/arguments.h"

namespace plugins {
namespace {

using host::Failure;
using host::Picture;

constexpr size_t kMostOptions = 12;

struct Call {
  VipsOperation parent;
  VipsImage *in, *out;
  Value values[kMostOptions];
  Request* request;          // from build on
  std::atomic<bool>* noted;  // what the person should know is said once a call
};

struct CallClass {
  VipsOperationClass parent;
  const host::OperationEntry* entry;
  const Request* sample;  // whose options are declared
};

CallClass* class_of(gpointer call) {
  return reinterpret_cast<CallClass*>(G_OBJECT_GET_CLASS(call));
}
const char* name_of(Call* call) { return VIPS_OBJECT_GET_CLASS(call)->nickname; }

struct Unref {
  void operator()(VipsImage* image) const { g_object_unref(image); }
};
using Image = std::unique_ptr<VipsImage, Unref>;

// libvips has described what went wrong already.
struct Described {};

void expect_done(int status) {
  if (status) throw Described();
}

Image expect_image(VipsImage* image) {
  if (!image) throw Described();
  return Image(image);
}

// ------------------------------------------------------------------------------- pictures of a host

void require_eight_bits(const VipsImage* image, const std::string& what) {
  const char* format = vips_enum_nick(VIPS_TYPE_BAND_FORMAT, image->BandFmt);
  if (image->Coding != VIPS_CODING_NONE)
    throw Failure(what + " is coded; decode it first, for example by vips colourspace IN OUT srgb");
  if (image->BandFmt != VIPS_FORMAT_UCHAR)
    throw Failure(what + " has samples of " +
                  std::to_string(8 * vips_format_sizeof(image->BandFmt)) + " bits (" + format +
                  "), and ROXE edits those of 8 (uchar); convert it first, for example by vips "
                  "colourspace IN OUT srgb");
  const bool grey = image->Type == VIPS_INTERPRETATION_B_W;
  const bool colour =
      image->Type == VIPS_INTERPRETATION_sRGB || image->Type == VIPS_INTERPRETATION_RGB;
  const bool fits = grey ? image->Bands == 1 || image->Bands == 2
                         : colour && (image->Bands == 3 || image->Bands == 4);
  if (!fits)
    throw Failure(what + " has " + std::to_string(image->Bands) + " bands of the interpretation " +
                  vips_enum_nick(VIPS_TYPE_INTERPRETATION, image->Type) +
                  ", and ROXE edits srgb or rgb of 3 or 4 bands and b-w of 1 or 2; convert it "
                  "first, for example by vips colourspace IN OUT srgb");
}

Layers read_image(VipsImage* image) {
  const Image memory = expect_image(vips_image_copy_memory(image));
  return take_apart({VIPS_IMAGE_ADDR(memory.get(), 0, 0),
                     static_cast<ptrdiff_t>(VIPS_IMAGE_SIZEOF_LINE(memory.get())), memory->Xsize,
                     memory->Ysize, memory->Bands});
}

host::Bytes profile_of(const VipsImage* image) {
  const void* data = nullptr;
  size_t size = 0;
  if (!vips_image_get_typeof(image, VIPS_META_ICC_NAME) ||
      vips_image_get_blob(image, VIPS_META_ICC_NAME, &data, &size))
    return {};
  const auto* bytes = static_cast<const uint8_t*>(data);
  return {bytes, bytes + size};
}

// ---------------------------------------------------------------------------------------- the work

// Edits, and says what the person should know.
host::Outcome edit(Call* call, Layers& layers) {
  if (!*call->noted) layers.colours.metadata.icc = profile_of(call->in);
  const host::Outcome outcome = call->request->apply(layers);
  if (!outcome.note.empty() && !call->noted->exchange(true))
    g_warning("%s: %s", name_of(call), outcome.note.c_str());
  return outcome;
}

// A header with the metadata of the input and the form of the result.
void prepare(Call* call, VipsImage* result, int32_t width, int32_t height, int32_t bands) {
  expect_done(vips_image_pipelinev(result, VIPS_DEMAND_STYLE_ANY, call->in, nullptr));
  result->Xsize = width;
  result->Ysize = height;
  result->Bands = bands;
  if (bands < 3)
    result->Type = VIPS_INTERPRETATION_B_W;
  else if (result->Type == VIPS_INTERPRETATION_B_W)
    result->Type = VIPS_INTERPRETATION_sRGB;
  // A mask is no photograph: no colour profile describes it.
  if (call->request->operation().gives_mask()) vips_image_remove(result, VIPS_META_ICC_NAME);
}

template <typename Function>
int described(const char* name, const Function& function) {
  try {
    function();
    return 0;
  } catch (const Described&) {
  } catch (const std::bad_alloc&) {
    vips_error(name, "there is not enough memory for this picture");
  } catch (const std::exception& error) {
    vips_error(name, "%s", error.what());
  }
  return -1;
}

// Part of the result from the same part of the input. Runs in several threads.
int draw_part(VipsRegion* to, void* sequence, void*, void* client, gboolean*) {
  auto* call = static_cast<Call*>(client);
  auto* from = static_cast<VipsRegion*>(sequence);
  const VipsRect area = to->valid;
  return described(name_of(call), [&] {
    expect_done(vips_region_prepare(from, &area));
    Layers layers = take_apart({VIPS_REGION_ADDR(from, area.left, area.top),
                                static_cast<ptrdiff_t>(VIPS_REGION_LSKIP(from)), area.width,
                                area.height, from->im->Bands});
    edit(call, layers);
    put_together(layers, {VIPS_REGION_ADDR(to, area.left, area.top),
                          static_cast<ptrdiff_t>(VIPS_REGION_LSKIP(to)), area.width, area.height,
                          to->im->Bands});
  });
}

void draw_in_parts(Call* call) {
  const int32_t bands = call->request->operation().gives_mask() ? 1 : call->in->Bands;
  prepare(call, call->out, call->in->Xsize, call->in->Ysize, bands);
  expect_done(
      vips_image_generate(call->out, vips_start_one, draw_part, vips_stop_one, call->in, call));
}

void draw_whole(Call* call) {
  Layers layers = read_image(call->in);
  const host::Outcome outcome = edit(call, layers);
  const Image result = expect_image(vips_image_new_memory());
  prepare(call, result.get(), layers.colours.width(), layers.colours.height(), channels_of(layers));
  if (outcome.axes_swapped) std::swap(result->Xres, result->Yres);
  expect_done(vips_image_write_prepare(result.get()));
  put_together(layers, {VIPS_IMAGE_ADDR(result.get(), 0, 0),
                        static_cast<ptrdiff_t>(VIPS_IMAGE_SIZEOF_LINE(result.get())), result->Xsize,
                        result->Ysize, result->Bands});
  expect_done(vips_image_write(result.get(), call->out));
}

void draw(Call* call) {
  if (!call->in) throw Failure("the picture is required, and null was given");
  require_eight_bits(call->in, "the picture");
  const std::vector<host::Option>& options = class_of(call)->sample->options();
  // The only picture that an operation takes beside its own.
  const auto hand_over = [&](const std::string& name) {
    for (size_t i = 0; i < options.size(); ++i)
      if (options[i].kind == host::Option::Kind::kPicture) {
        require_eight_bits(call->values[i].picture, "the mask");
        Layers layers = read_image(call->values[i].picture);
        darken_transparent(layers);
        return host::NamedPicture{name, std::move(layers.colours)};
      }
    throw Failure("there is no picture " + name);
  };
  delete call->request;
  call->request = new Request(*class_of(call)->entry);
  call->request->take(given_arguments(VIPS_OBJECT(call), options, call->values), hand_over);

  g_object_set(call, "out", vips_image_new(), nullptr);
  // Whether grey stays grey is known at the end.
  if (call->request->operation().by_pixels() && call->in->Bands >= 3)
    draw_in_parts(call);
  else
    draw_whole(call);
}

// ----------------------------------------------------------------------------------------- its class

VipsObjectClass* parent_class() {
  return static_cast<VipsObjectClass*>(g_type_class_peek(VIPS_TYPE_OPERATION));
}

int build(VipsObject* object) {
  if (parent_class()->build(object)) return -1;
  auto* call = reinterpret_cast<Call*>(object);
  return described(name_of(call), [&] { draw(call); });
}

void finalize(GObject* object) {
  auto* call = reinterpret_cast<Call*>(object);
  delete call->request;
  delete call->noted;
  G_OBJECT_CLASS(parent_class())->finalize(object);
}

void declare_image(VipsObjectClass* type, const char* name, const char* meaning, int priority,
                   int flags, size_t offset) {
  GParamSpec* spec = g_param_spec_object(name, name, meaning, VIPS_TYPE_IMAGE, G_PARAM_READWRITE);
  g_object_class_install_property(G_OBJECT_CLASS(type), static_cast<guint>(vips_argument_get_id()),
                                  spec);
  vips_object_class_install_argument(type, spec, VipsArgumentFlags(flags), priority,
                                     static_cast<guint>(offset));
}

void class_init(gpointer type, gpointer data) {
  auto* own = static_cast<CallClass*>(type);
  own->entry = static_cast<const host::OperationEntry*>(data);
  own->sample = new Request(*own->entry);  // as long as the class: until the program ends
  assert(own->sample->options().size() <= kMostOptions);

  auto* object = VIPS_OBJECT_CLASS(type);
  G_OBJECT_CLASS(type)->set_property = vips_object_set_property;
  G_OBJECT_CLASS(type)->get_property = vips_object_get_property;
  G_OBJECT_CLASS(type)->finalize = finalize;
  object->nickname = g_strdup(("roxe_" + identifier(own->entry->name, '_')).c_str());
  object->description = g_strdup(std::string(own->entry->description).c_str());
  object->build = build;
  // Each picture is read once, from its top to its bottom.
  VIPS_OPERATION_CLASS(type)->flags = VIPS_OPERATION_SEQUENTIAL;

  declare_image(object, "in", "the picture to edit", 1, VIPS_ARGUMENT_REQUIRED_INPUT,
                offsetof(Call, in));
  declare_image(object, "out", "the result", 2, VIPS_ARGUMENT_REQUIRED_OUTPUT, offsetof(Call, out));
  declare_arguments(object, own->sample->options(), offsetof(Call, values));
}

void instance_init(GTypeInstance* instance, gpointer type) {
  auto* call = reinterpret_cast<Call*>(instance);
  call->noted = new std::atomic<bool>(false);
  set_defaults(static_cast<CallClass*>(type)->sample->options(), call->values);
}

}  // namespace

void register_operation(const host::OperationEntry& entry) {
  // RoxeShadowHighlight
  std::string name = "Roxe";
  bool capital = true;
  for (const char c : entry.name) {
    if (c != '-') name += capital ? g_ascii_toupper(c) : c;
    capital = c == '-';
  }
  const GTypeInfo info = {sizeof(CallClass), nullptr,
                          nullptr,           class_init,
                          nullptr,           const_cast<host::OperationEntry*>(&entry),
                          sizeof(Call),      0,
                          instance_init,     nullptr};
  g_type_register_static(VIPS_TYPE_OPERATION, name.c_str(), &info, GTypeFlags(0));
}

}  // namespace plugins
