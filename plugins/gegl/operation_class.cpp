#include "operation_class.h"

#include <algorithm>
#include <atomic>
#include <exception>
#include <memory>
#include <new>
#include <optional>
#include <string>
#include <utility>

#include "buffers.h"
#include "settings.h"
#include "shared/request.h"

// Reasons for leaving a picture as it is can be read with G_MESSAGES_DEBUG=roxe.
#define ROXE_SAY(...) g_log("roxe", G_LOG_LEVEL_INFO, __VA_ARGS__)

namespace roxe_gegl {
namespace {

using host::OperationEntry;
using host::Picture;
using plugins::Request;

// ------------------------------------------------------------------------- classes and their objects

// What the objects of one class have in common.
struct Kind {
  const OperationEntry* entry;
  Settings settings;
};

struct State {
  explicit State(const Kind& k) : kind(&k), values(k.settings.count()) {}

  const Kind* kind;
  Values values;
  const Babl* space = nullptr;  // of the picture
  // Made from the values, without a second picture. None: they make no sense.
  std::shared_ptr<const Request> request;
};

// Copies: GEGL unloads a module after listing its operations and loads it again for use.
GQuark kind_quark() { return g_quark_from_string("roxe-kind"); }
GQuark state_quark() { return g_quark_from_string("roxe-state"); }

State& state_of(gpointer object) {
  return *static_cast<State*>(g_object_get_qdata(G_OBJECT(object), state_quark()));
}

// load gives the second picture. Throws host::UsageError where the values make no sense.
std::shared_ptr<const Request> make_request(const State& state,
                                            const host::LoadPicture& load = {}) {
  const auto request = std::make_shared<Request>(*state.kind->entry);
  const bool picture_there = static_cast<bool>(load);
  request->take(state.kind->settings.given(state.values, picture_there, state.space), load);
  return request;
}

// ------------------------------------------------------------------------------------------- areas

GeglRectangle source_area(GeglOperation* operation) {
  const GeglRectangle* area = gegl_operation_source_get_bounding_box(operation, "input");
  return area ? *area : GeglRectangle{0, 0, 0, 0};
}

bool is_a_picture(int32_t width, int32_t height) {
  return width > 0 && height > 0 && int64_t{width} * height <= Picture::kMaxPixels;
}

const char* sentence_of(const std::exception& error) {
  const bool is_memory = dynamic_cast<const std::bad_alloc*>(&error) != nullptr;
  return is_memory ? "there is not enough memory for this picture" : error.what();
}

// Where the result lies. None: the picture stays as it is, because there is none, it is endless or
// too large, or the options make no sense on it.
std::optional<GeglRectangle> result_area(const State& state, const GeglRectangle& source) {
  if (!state.request) return {};
  if (state.request->operation().by_pixels()) return source;
  if (!is_a_picture(source.width, source.height)) return {};
  try {
    const auto [origin, size] =
        state.request->operation().result_area({source.width, source.height});
    if (!is_a_picture(size.width, size.height)) return {};
    return GeglRectangle{source.x + origin.x, source.y + origin.y, size.width, size.height};
  } catch (const std::exception& error) {
    ROXE_SAY("%s", sentence_of(error));
    return {};
  }
}

GeglRectangle bounding_box(GeglOperation* operation) {
  const GeglRectangle source = source_area(operation);
  return result_area(state_of(operation), source).value_or(source);
}

// Whether every pixel of the result may depend on every pixel of the source.
bool looks_at_everything(GeglOperation* operation) {
  const State& state = state_of(operation);
  return result_area(state, source_area(operation)) && !state.request->operation().by_pixels();
}

GeglRectangle required_for_output(GeglOperation* operation, const gchar*,
                                  const GeglRectangle* area) {
  return looks_at_everything(operation) ? source_area(operation) : *area;
}

GeglRectangle cached_region(GeglOperation* operation, const GeglRectangle* area) {
  return looks_at_everything(operation) ? bounding_box(operation) : *area;
}

GeglRectangle invalidated_by_change(GeglOperation* operation, const gchar*,
                                    const GeglRectangle* area) {
  return looks_at_everything(operation) ? bounding_box(operation) : *area;
}

// ------------------------------------------------------------------------------------------ pixels

uint8_t background_opacity(const State& state) {
  return state.kind->settings.opacity_of("--background", state.values, state.space);
}

void prepare(GeglOperation* operation) {
  State& state = state_of(operation);
  const Babl* source = gegl_operation_get_source_format(operation, "input");
  state.space = gegl_operation_get_source_space(operation, "input");
  const bool with_opacity =
      (source && babl_format_has_alpha(source)) || background_opacity(state) < 255;
  const Babl* format = bytes_format(with_opacity, state.space);
  gegl_operation_set_format(operation, "input", format);
  gegl_operation_set_format(operation, "output", format);
  try {
    state.request = make_request(state);
  } catch (const std::exception& error) {
    ROXE_SAY("%s", sentence_of(error));
    state.request = nullptr;
  }
}

// aux: the second picture, or null.
void change_whole(const State& state, GeglBuffer* input, GeglBuffer* aux, GeglBuffer* output,
                  const GeglRectangle& source, const GeglRectangle& result, const Babl* format) {
  const std::shared_ptr<const Request> request =
      !aux ? state.request : make_request(state, [&](const std::string& name) {
        return host::NamedPicture{name, read_on_black(aux, source)};
      });
  plugins::Layers layers = read_layers(input, source, format);
  request->apply(layers, background_opacity(state));
  write_layers(layers, output, result.x, result.y, format);
}

// In parts, by as many threads as GEGL has. Returns whether all of them came through.
bool change_by_pixels(const Request& request, GeglBuffer* input, GeglBuffer* output,
                      const GeglRectangle& area, const Babl* format) {
  constexpr double kPixelsWorthAThread = 64 * 64;
  constexpr int kPixelsAtOnce = 128 * 128;
  std::atomic<bool> done = true;
  gegl_parallel_distribute_area(&area, kPixelsWorthAThread, [&](const GeglRectangle* part) {
    const int rows = std::max(1, kPixelsAtOnce / part->width);
    try {
      for (int top = 0; top < part->height; top += rows) {
        const GeglRectangle strip = {part->x, part->y + top, part->width,
                                     std::min(rows, part->height - top)};
        plugins::Layers layers = read_layers(input, strip, format);
        request.apply(layers);
        write_layers(layers, output, strip.x, strip.y, format);
      }
    } catch (const std::exception& error) {
      ROXE_SAY("%s", sentence_of(error));
      done = false;
    }
  });
  return done;
}

gboolean process(GeglOperation* object, GeglOperationContext* context, const gchar* pad,
                 const GeglRectangle* area, gint) {
  GObject* source_object = gegl_operation_context_get_object(context, "input");
  if (!source_object) return FALSE;
  const State& state = state_of(object);
  const GeglRectangle source = source_area(object);
  const std::optional<GeglRectangle> result = result_area(state, source);
  if (!result) {
    gegl_operation_context_set_object(context, pad, source_object);
    return TRUE;
  }

  GeglBuffer* input = GEGL_BUFFER(source_object);
  GeglBuffer* output = gegl_operation_context_get_target(context, pad);
  const Babl* format = gegl_operation_get_format(object, "output");
  if (state.request->operation().by_pixels())
    return change_by_pixels(*state.request, input, output, *area, format);
  GObject* aux = state.kind->settings.has_picture()
                     ? gegl_operation_context_get_object(context, "aux")
                     : nullptr;
  try {
    change_whole(state, input, aux ? GEGL_BUFFER(aux) : nullptr, output, source, *result, format);
  } catch (const std::exception& error) {
    ROXE_SAY("%s", sentence_of(error));
    gegl_buffer_copy(input, area, GEGL_ABYSS_NONE, output, area);
  }
  return TRUE;
}

// ----------------------------------------------------------------------------------------- classes

void describe(GeglOperationClass* op_class, const OperationEntry& entry) {
  const bool moves_pixels = entry.make()->moves_pixels();
  const std::string name = "roxe:" + std::string(entry.name);
  std::string title = "ROXE " + std::string(entry.name);
  std::ranges::replace(title, '-', ' ');
  std::string description = std::string(entry.description) + ". ";
  if (moves_pixels) description += "Pixels count from the top left corner of the picture. ";
  description +=
      "Reckoned in 8 bits a channel, to which deeper pictures are rounded; opacity is kept.";
  gegl_operation_class_set_keys(op_class, "name", name.c_str(), "title", title.c_str(),
                                "categories", moves_pixels ? "geometry" : "color", "description",
                                description.c_str(), nullptr);
}

void class_init(gpointer op_class, gpointer data) {
  const Kind& kind = *static_cast<const Kind*>(data);
  GObjectClass* object_class = G_OBJECT_CLASS(op_class);
  object_class->set_property = [](GObject* object, guint id, const GValue* value, GParamSpec*) {
    state_of(object).values.set(id - 1, *value);
  };
  object_class->get_property = [](GObject* object, guint id, GValue* value, GParamSpec*) {
    state_of(object).values.get(id - 1, *value);
  };
  kind.settings.install(object_class);

  GeglOperationClass* operation_class = GEGL_OPERATION_CLASS(op_class);
  operation_class->prepare = prepare;
  operation_class->get_bounding_box = bounding_box;
  operation_class->get_required_for_output = required_for_output;
  operation_class->get_cached_region = cached_region;
  operation_class->get_invalidated_by_change = invalidated_by_change;
  operation_class->process = process;
  operation_class->opencl_support = FALSE;
  operation_class->threaded = FALSE;  // parts and threads are chosen here
  describe(operation_class, *kind.entry);
  if (kind.settings.has_picture()) {
    GEGL_OPERATION_COMPOSER_CLASS(op_class)->aux_label = "Mask";
    GEGL_OPERATION_COMPOSER_CLASS(op_class)->aux_description =
        "white stays sharp, black is blurred; where there is none, everything is";
  }
}

void object_init(GTypeInstance* object, gpointer op_class) {
  const auto* kind =
      static_cast<const Kind*>(g_type_get_qdata(G_TYPE_FROM_CLASS(op_class), kind_quark()));
  g_object_set_qdata_full(G_OBJECT(object), state_quark(), new State(*kind),
                          [](gpointer state) { delete static_cast<State*>(state); });
}

}  // namespace

void register_operation(GTypeModule* module, const OperationEntry& entry) {
  // Kept as long as the program runs, as types are.
  Kind* kind = new Kind{&entry, Settings(Request(entry).options())};
  const GType parent =
      kind->settings.has_picture() ? GEGL_TYPE_OPERATION_COMPOSER : GEGL_TYPE_OPERATION_FILTER;
  GTypeQuery sizes;
  g_type_query(parent, &sizes);
  const GTypeInfo info = {.class_size = static_cast<guint16>(sizes.class_size),
                          .base_init = nullptr,
                          .base_finalize = nullptr,
                          .class_init = class_init,
                          .class_finalize = nullptr,
                          .class_data = kind,
                          .instance_size = static_cast<guint16>(sizes.instance_size),
                          .n_preallocs = 0,
                          .instance_init = object_init,
                          .value_table = nullptr};
  const std::string name = "GeglOpRoxe-" + std::string(entry.name);
  const GType type =
      g_type_module_register_type(module, parent, name.c_str(), &info, static_cast<GTypeFlags>(0));
  g_type_set_qdata(type, kind_quark(), kind);
}

}  // namespace roxe_gegl
