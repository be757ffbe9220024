// The rows themselves, for the functions of namespace side: the library's or the references'.
// Included within an unnamed namespace, once for each.
// Numbers that are the same everywhere.
struct Numbers {
  uint32_t state;

  uint32_t bits() {
    const uint32_t high = (state = state * 1664525u + 1013904223u) >> 16;
    return high << 16 | (state = state * 1664525u + 1013904223u) >> 16;
  }
  // Below limit in size; limit 0: any 32 bits.
  int32_t integer(int32_t limit) {
    if (limit == 0) return static_cast<int32_t>(bits());
    return static_cast<int32_t>(bits() % static_cast<uint32_t>(2 * limit - 1)) - limit + 1;
  }
  uint8_t byte() { return static_cast<uint8_t>(bits()); }
  // In 24 bits, so that it is exact; below limit in size, a power of two.
  float real(float limit) { return limit * (static_cast<float>(integer(1 << 24)) / 16777216.0f); }
  Quad quad(int32_t limit) {
    Quad q;
    for (int32_t* at : {&q.x0, &q.y0, &q.x1, &q.y1, &q.x2, &q.y2, &q.x3, &q.y3})
      *at = integer(limit);
    return q;
  }
};

class InternalTable {
 public:
  // run(digest) adds what the routine gives and returns its status.
  template <class Run>
  void add(const std::string& name, const std::string& on, const Run& run) {
    Digest digest;
    const int32_t status = run(digest);
    text += ChecksumLine(name, on, status, digest);
  }
  std::string text;
};

// So many inputs are behind each row.
constexpr int32_t kInputs = 60;

void add_frame(InternalTable& table) {
  struct Function {
    const char* name;
    float (*of)(double);
    double low, high;
  };
  const Function functions[] = {
      {"XRSin", side::XRSin, -9, 9},     {"XRCos", side::XRCos, -9, 9},
      {"XRTan", side::XRTan, -9, 9},     {"XRASin", side::XRASin, -1, 1},
      {"XRACos", side::XRACos, -1, 1},   {"XRATan", side::XRATan, -90, 90},
      {"XRSqrt", side::XRSqrt, 0, 1000}, {"XRLog", side::XRLog, 0, 1000},
      {"XRLog10", side::XRLog10, 0, 99}, {"XRExp", side::XRExp, -80, 80},
  };
  for (const Function& function : functions)
    table.add(function.name, "its range", [&](Digest& digest) {
      for (int32_t i = 0; i <= 256; ++i)
        digest.add(double{function.of(function.low + (function.high - function.low) * i / 256)});
      return 0;
    });
  table.add("XRPow", "its range", [](Digest& digest) {
    for (int32_t base = 0; base <= 32; ++base)
      for (int32_t exponent = -12; exponent <= 12; ++exponent)
        digest.add(double{side::XRPow(base / 16.0, exponent / 5.0)});
    return 0;
  });
}

void add_geometry(InternalTable& table) {
  for (const int32_t limit : {9, 120, 5000, 100000, 0}) {
    const std::string on = limit ? "coordinates below" + Joined(limit) : "any coordinates";
    // Calls so many times and returns how often the result was not 0.
    const auto add = [&](const std::string& name, const auto& routine) {
      table.add(name, on, [&](Digest& digest) {
        Numbers numbers = {static_cast<uint32_t>(limit)};
        int32_t accepted = 0;
        for (int32_t i = 0; i < kInputs; ++i) accepted += routine(numbers.quad(limit), digest) != 0;
        return accepted;
      });
    };
    const auto add_quad = [](Digest& digest, const Quad& q) {
      digest.add({q.x0, q.y0, q.x1, q.y1, q.x2, q.y2, q.x3, q.y3});
    };
    add("xrmlGetClosestAngleWithCoorAxis", [](const Quad& q, Digest& digest) {
      digest.add(double{side::xrmlGetClosestAngleWithCoorAxis(q.x0, q.y0, q.x1, q.y1)});
      return 1;
    });
    add("xrmlGetLength2D", [](const Quad& q, Digest& digest) {
      digest.add(double{side::xrmlGetLength2D(q.x0, q.y0, q.x1, q.y1)});
      return 1;
    });
    add("xrmlIsConvexQuadrilateral",
        [](const Quad& q, Digest&) { return side::xrmlIsConvexQuadrilateral(&q); });
    add("xrmlGetIntersectOfLines", [](const Quad& q, Digest& digest) {
      side::Point at = {-7, -7};
      const int32_t status =
          side::xrmlGetIntersectOfLines(q.x0, q.y0, q.x1, q.y1, q.x2, q.y2, q.x3, q.y3, &at);
      digest.add({at.x, at.y});
      return status;
    });
    add("GetProjection", [](const Quad& q, Digest& digest) {
      side::Point foot = {-7, -7};
      const int32_t status = side::GetProjection(q.x0, q.y0, q.x1, q.y1, q.x2, q.y2, &foot);
      digest.add({foot.x, foot.y});
      return status;
    });
    add("GetAdjustCenter", [](const Quad& q, Digest& digest) {
      side::Point centre = {-7, -7};
      side::GetAdjustCenter(&centre, q.x0, q.y0, q.x1, q.y1);
      digest.add({centre.x, centre.y});
      return 1;
    });
    add("SortToAntiClockwise", [&](Quad q, Digest& digest) {
      side::SortToAntiClockwise(&q);
      add_quad(digest, q);
      return 1;
    });
    add("GetDstPoints", [&](Quad q, Digest& digest) {
      side::Point3D points[4] = {};
      float camera[3] = {-7, -7, -7};
      const int32_t status = side::GetDstPoints(&q, q.x0 / 2, q.y2 / 2, points, camera);
      add_quad(digest, q);
      for (const side::Point3D& p : points) {
        const float at[] = {p.x, p.y, p.z};
        digest.add(at, 3);
      }
      digest.add(camera, 3);
      return status;
    });
    add("GetAffineParameters", [&](const Quad& q, Digest& digest) {
      const Quad onto = {0, 0, 90, 1, 88, 70, -2, 69};
      digest.add(side::GetAffineParameters(q, onto).data(), 8);
      return 1;
    });
    add("PointSrcToDst and RectSrcToDst", [&](const Quad& q, Digest& digest) {
      const auto p =
          side::GetAffineParameters({3, 2, 99, 7, 90, 80, -5, 77}, {0, 0, 80, 0, 80, 60, 0, 60});
      const side::Point at = side::PointSrcToDst(q.x0, q.y0, p.data());
      const PixelRect box = side::RectSrcToDst(q.x1, q.y1, q.x2, q.y2, p.data());
      digest.add({at.x, at.y, box.left, box.top, box.right, box.bottom});
      return 1;
    });
    add("GetOrigin", [](const Quad& q, Digest& digest) {
      const side::Point at =
          side::GetOrigin(q.x0, q.y0, q.x1, q.y1, static_cast<float>(q.x2 % 100) / 16.0f);
      digest.add({at.x, at.y});
      return 1;
    });
  }
  // Corners of pictures as they are taken: convex, in every order.
  table.add("GetDstPoints", "convex corners", [](Digest& digest) {
    Numbers numbers = {5};
    int32_t found = 0;
    for (int32_t i = 0; i < kInputs; ++i) {
      const auto off = [&] { return numbers.integer(60); };
      Quad q = {100 + off(), 80 + off(),  500 + off(), 90 + off(),
                480 + off(), 400 + off(), 90 + off(),  380 + off()};
      side::Point3D points[4] = {};
      float camera[3] = {0, 0, 0};
      found += side::GetDstPoints(&q, 320, 240, points, camera);
      for (const side::Point3D& p : points) {
        const float at[] = {p.x, p.y, p.z};
        digest.add(at, 3);
      }
      digest.add(camera, 3);
      digest.add({q.x0, q.y0, q.x1, q.y1, q.x2, q.y2, q.x3, q.y3});
    }
    return found;
  });
  struct Reach {
    const char* name;
    float limit;
  };
  for (const Reach& reach : {Reach{"1", 1}, Reach{"1024", 1024}, Reach{"1e30", 1e30f}}) {
    const std::string on = std::string("numbers below ") + reach.name;
    const auto point = [&](Numbers& numbers) {
      const float x = numbers.real(reach.limit), y = numbers.real(reach.limit);
      return side::Point3D{x, y, numbers.real(reach.limit)};
    };
    table.add("xrmlGetLength3D", on, [&](Digest& digest) {
      Numbers numbers = {1};
      for (int32_t i = 0; i < kInputs; ++i) {
        const side::Point3D a = point(numbers), b = point(numbers);
        digest.add(double{side::xrmlGetLength3D(a, b)});
      }
      return 0;
    });
    table.add("xrmlGetLengthPoint2Place", on, [&](Digest& digest) {
      Numbers numbers = {2};
      for (int32_t i = 0; i < kInputs; ++i) {
        const side::Point3D a = point(numbers), b = point(numbers), c = point(numbers);
        digest.add(double{side::xrmlGetLengthPoint2Place(a, b, c, point(numbers))});
      }
      return 0;
    });
  }
  for (int32_t n = 1; n <= 8; ++n) {
    const std::string on = std::to_string(n) + " x " + std::to_string(n);
    const auto matrix = [n](Numbers& numbers) {
      std::vector<float> entries(static_cast<size_t>(n * n));
      for (float& entry : entries) entry = numbers.integer(6) ? numbers.real(8) : 0;
      return entries;
    };
    table.add("xrmlMatrixInverse", on, [&](Digest& digest) {
      Numbers numbers = {static_cast<uint32_t>(n)};
      int32_t regular = 0;
      for (int32_t i = 0; i < 20; ++i) {
        const std::vector<float> entries = matrix(numbers);
        std::vector<float> inverse(entries.size());
        regular += side::xrmlMatrixInverse(inverse.data(), entries.data(), n);
        digest.add(inverse.data(), n * n);
      }
      return regular;
    });
    table.add("xrmlMatrixMultiply", on, [&](Digest& digest) {
      Numbers numbers = {static_cast<uint32_t>(n)};
      const std::vector<float> a = matrix(numbers), b = matrix(numbers);
      std::vector<float> product(a.size());
      const int32_t status = side::xrmlMatrixMultiply(a.data(), b.data(), product.data(), n, n);
      digest.add(product.data(), n * n);
      return status;
    });
  }
}

// One picture into another through a worker.
template <class Work>
void add_picture(InternalTable& table, const std::string& name, Picture& source, const Work& work) {
  table.add(name, source.name, [&](Digest& digest) {
    Picture target = picture("", source.record.format, source.record.width, source.record.height, 3,
                             [](int32_t x, int32_t y, int32_t c) {
                               return static_cast<uint8_t>(17 * x + 31 * y + 101 * c);
                             });
    PixelArray src = record_of(source), dst = record_of(target);
    const int32_t status = work(src, dst);
    digest.add(target.bytes);
    return status;
  });
}

std::vector<Picture> small_pictures() {
  Numbers numbers = {3};
  const Paint random = [&](int32_t, int32_t, int32_t) { return numbers.byte(); };
  const Paint slopes = [](int32_t x, int32_t y, int32_t c) {
    return static_cast<uint8_t>((c + 1) * x + (5 - c) * y);
  };
  return {picture("noise 43x29", kRoxeFormatRGB24, 43, 29, 1, random),
          picture("slopes 20x61", kRoxeFormatRGB24, 20, 61, 0, slopes),
          picture("noise 3x40", kRoxeFormatRGB24, 3, 40, 2, random)};
}

void add_workers_of_geometry(InternalTable& table, Picture& source) {
  const float maps[][6] = {
      {1, 0, 0, 0, 1, 0},         {0.5f, 0.25f, 3, -0.25f, 0.5f, 9}, {2, -1, -0.75f, 1, 2, 0.125f},
      {-1, 0, 40, 0, -1, 28},     {0, 0, 5.5f, 0, 0, 7.25f},         {1e-4f, 3, -1, 2, 1e-4f, -2},
      {40000, 0, 0, 0, -40000, 0}};
  for (const auto& map : maps)
    add_picture(table, "RotateImage_RGB24" + Joined(map[0], map[1], map[2]), source,
                [&](PixelArray& src, PixelArray& dst) {
                  side::RotateImage_RGB24(src, dst, map);
                  return 0;
                });
  const float mappings[][8] = {{1, 0, 0, 0, 1, 0, 0, 0},
                               {0.75f, 0.125f, 2, -0.25f, 0.5f, 9, 0.001f, -0.002f},
                               {1, 0, -0.5f, 0, 1, -0.5f, 0, 0},
                               {0, 1, 0, 1, 0, 0, 0, 0},
                               {1, 1, 1, 1, 1, 1, -0.03125f, -0.03125f}};
  for (const auto& p : mappings)
    add_picture(table, "ApplyParameters" + Joined(p[0], p[1], p[2]), source,
                [&](PixelArray& src, PixelArray& dst) {
                  return side::ApplyParameters(src, dst, p, 1, -2, -3, 2, dst.width - 1,
                                               dst.height + 4);
                });
}

void add_blurs(InternalTable& table, const Picture& source) {
  Picture colour = source;
  Picture grey =
      picture(source.name + " of 8 bits", kRoxeFormatGray8, source.record.width,
              source.record.height, 4, [&](int32_t x, int32_t y, int32_t) {
                return source.bytes[static_cast<size_t>(y * source.record.rowBytes + 3 * x)];
              });
  for (Picture* one : {&colour, &grey}) {
    for (const Quad& sides :
         {Quad{1, 1, 1, 1, 0, 0, 0, 0}, Quad{0, 2, 3, 0, 0, 0, 0, 0}, Quad{7, 0, 0, 9, 0, 0, 0, 0},
          Quad{99, 4, 1, 0, 0, 0, 0, 0}, Quad{12, 80, 12, 80, 0, 0, 0, 0},
          Quad{1, 0, 1, 0, 0, 0, 0, 0}, Quad{-1, 1, 1, 1, 0, 0, 0, 0}})
      add_picture(table, "BoxBlurA" + Joined(sides.x0, sides.y0, sides.x1, sides.y1), *one,
                  [&](PixelArray& src, PixelArray& dst) {
                    return side::BoxBlurA(&src, &dst, sides.x0, sides.y0, sides.x1, sides.y1);
                  });
    for (const int32_t radius : {2, 5, 24, 300}) {
      add_picture(table, "GaussianBlurA" + Joined(radius), *one,
                  [&](PixelArray& src, PixelArray& dst) {
                    return side::GaussianBlurA(&src, &dst, radius);
                  });
      add_picture(table, "GaussianStream" + Joined(radius), *one,
                  [&](PixelArray& src, PixelArray& dst) {
                    return side::gaussian_by_rows(&src, &dst, radius);
                  });
    }
  }
}

void add_parts_of_blurs(InternalTable& table) {
  table.add("BoxBlurGetModLengthRange", "n below 30", [](Digest& digest) {
    for (int32_t n = 1; n < 30; ++n)
      for (int32_t before = 0; before < 33; before += 3)
        for (int32_t after = 0; after < 33; after += 4) {
          const auto range = side::BoxBlurGetModLengthRange(before, after, n);
          digest.add({range.min, range.end});
        }
    return 0;
  });
  for (const int32_t from : {1, 40, 4000})
    table.add("BoxBlurCreateModDivBuffer", "from" + Joined(from), [&](Digest& digest) {
      for (const uint32_t reciprocal :
           side::BoxBlurCreateModDivBuffer(from, from + 30, from, from + 20))
        digest.add(int64_t{reciprocal});
      return 0;
    });
  for (const int32_t width : {1, 2, 9, 40, 130})
    table.add("BoxBlurSumLine and BoxBlurProcessRow", "width" + Joined(width), [&](Digest& digest) {
      Numbers numbers = {static_cast<uint32_t>(width)};
      const size_t bytes = static_cast<size_t>(3 * width);
      std::vector<uint8_t> row(bytes), out(bytes);
      std::vector<uint32_t> sums_8(bytes), sums_24(bytes), reciprocals(bytes + 1);
      for (uint8_t& byte : row) byte = numbers.byte();
      for (uint32_t length = 1; length < reciprocals.size(); ++length)
        reciprocals[length] = (1u << 23) / (length * 2);
      for (const int32_t add : {1, 1, 1, 0}) {
        side::BoxBlurSumLine8(row.data(), 3 * width, sums_8.data(), add);
        side::BoxBlurSumLine24(row.data(), width, sums_24.data(), add);
        row.insert(row.begin(), numbers.byte());
      }
      for (size_t i = 0; i < bytes; ++i)
        digest.add({static_cast<int32_t>(sums_8[i]), static_cast<int32_t>(sums_24[i])});
      for (const int32_t right : {0, 1, 5, 200}) {
        side::BoxBlurProcessRow8(sums_8.data(), out.data(), 3 * width, 2, right,
                                 reciprocals.data());
        digest.add(out);
        side::BoxBlurProcessRow24(sums_24.data(), out.data(), width, 3, right, reciprocals.data());
        digest.add(out);
      }
      return 0;
    });
  for (const PixelRect& size : {PixelRect{0, 0, 1, 1}, PixelRect{0, 0, 9, 8},
                                PixelRect{0, 0, 8, 33}, PixelRect{0, 0, 70, 13}}) {
    const int32_t width = size.right, height = size.bottom;
    const std::string on = std::to_string(width) + "x" + std::to_string(height);
    // run(data, temp) works on a plane; both are results.
    const auto add = [&](const std::string& name, const auto& run) {
      table.add(name, on, [&](Digest& digest) {
        Numbers numbers = {7};
        std::vector<float> data(static_cast<size_t>(width * height)), temp(data.size());
        for (float& value : data) value = numbers.real(256);
        run(data.data(), temp.data());
        digest.add(data.data(), width * height);
        digest.add(temp.data(), width * height);
        return 0;
      });
    };
    add("ProcessRow2Column", [&](float* data, float* temp) {
      side::ProcessRow2Column(temp, data, width, height, 3, 1);
    });
    add("ProcessRow2ColumnUnrollingLoop", [&](float* data, float* temp) {
      side::ProcessRow2ColumnUnrollingLoop(temp, data, width, height, 0, 4);
    });
    add("BoxBlurImp", [&](float* data, float* temp) {
      side::BoxBlurImp(data, temp, width, height, 2, 3, 1.0 / 36);
    });
    for (const uint32_t length : {2u, 5u, 31u}) {
      add("BoxBlur" + Joined(length),
          [&](float* data, float* temp) { side::BoxBlur(data, temp, width, height, length); });
      add("GaussianBlur" + Joined(length), [&](float* data, float* temp) {
        side::GaussianBlur(data, data, temp, width, height, length);
      });
    }
  }
}

void add_colours(InternalTable& table) {
  for (int32_t red = 0; red <= 255; red += 51)
    table.add("XRDRGB2HSV and XRDRGB2HSL", "red" + Joined(red), [&](Digest& digest) {
      for (uint32_t green = 0; green <= 255; green += 5)
        for (uint32_t blue = 0; blue <= 255; blue += 15) {
          int32_t hsv[3];
          side::XRDRGB2HSV(static_cast<uint32_t>(red), green, blue, &hsv[0], &hsv[1], &hsv[2]);
          digest.add({hsv[0], hsv[1], hsv[2]});
          float hsl[3];
          side::XRDRGB2HSL(static_cast<uint32_t>(red), green, blue, &hsl[0], &hsl[1], &hsl[2]);
          digest.add(hsl, 3);
        }
      return 0;
    });
  for (const float turns : {-720.0f, 0.0f, 360.0f})
    table.add("XRDHSV2RGB", "hues from" + Joined(turns), [&](Digest& digest) {
      for (float hue = turns; hue < turns + 360; hue += 7.5f)
        for (float saturation = -20; saturation < 280; saturation += 36.5f)
          for (const float value : {-1.0f, 90.25f, 255.0f, 300.0f}) {
            uint8_t red, green, blue;
            side::XRDHSV2RGB(hue, saturation, value, &red, &green, &blue);
            digest.add({red, green, blue});
          }
      return 0;
    });
  uint32_t fade[256], cosine[361], reciprocal[202];
  side::init_cylindrical_metric(fade, 256, cosine, 361, reciprocal, 202);
  table.add("init_cylindrical_metric", "all entries", [&](Digest& digest) {
    for (const uint32_t entry : fade) digest.add(int64_t{entry});
    for (const uint32_t entry : cosine) digest.add(int64_t{entry});
    for (const uint32_t entry : reciprocal) digest.add(int64_t{entry});
    return 0;
  });
  for (const uint32_t limit : {0u, 1u, 20u, 100u, 201u})
    table.add("cylindrical_metric", "limit" + Joined(limit), [&](Digest& digest) {
      Numbers numbers = {limit};
      for (int32_t i = 0; i < 10 * kInputs; ++i) {
        const int32_t hue = static_cast<int32_t>(numbers.bits() % 361),
                      other = static_cast<int32_t>(numbers.bits() % 361);
        const int32_t saturation = numbers.byte(), other_saturation = numbers.byte();
        const uint32_t value = numbers.byte(), other_value = numbers.byte();
        digest.add(int64_t{side::cylindrical_metric(hue, saturation, value, other, other_saturation,
                                                    other_value, limit, limit * limit,
                                                    reciprocal[limit], fade, cosine)});
      }
      return 0;
    });
  for (const double limit : {0.5, 7.0, 50.0}) {
    const std::string on = "limit" + Joined(limit);
    const auto add = [&](const std::string& name, const auto& metric) {
      table.add(name, on, [&](Digest& digest) {
        Numbers numbers = {11};
        for (int32_t i = 0; i < 2 * kInputs; ++i) {
          double at[6];
          for (double& value : at) value = double{numbers.real(i % 2 ? 16 : 256)};
          digest.add(metric(at[0], at[1], at[2], at[3], at[4], at[5], limit));
        }
        return 0;
      });
    };
    add("achromatic_pixel_metric", side::achromatic_pixel_metric);
    add("minkowski_metric", side::minkowski_metric);
    add("canberra_metric", side::canberra_metric);
    add("chromatic_metric", side::chromatic_metric);
  }
  for (const uint32_t steps : {0u, 1u, 77u, 200u})
    table.add("create_blur_table", "steps" + Joined(steps), [&](Digest& digest) {
      int32_t weights[256];
      side::create_blur_table(weights, 256, steps);
      for (const int32_t weight : weights) digest.add(int64_t{weight});
      return 0;
    });
}

void add_white_balance(InternalTable& table) {
  table.add("sRGB2LinearRGBChannel and its table", "all bytes", [](Digest& digest) {
    for (uint32_t value = 0; value < 256; ++value)
      digest.add(double{side::sRGB2LinearRGBChannel(value)});
    digest.add(side::CreatesRGB2LinearRGBIndex().data(), 256);
    return 0;
  });
  table.add("LinearRGB2sRGBChannel and its table", "-1 to 2", [](Digest& digest) {
    for (int32_t i = -64; i <= 128; ++i)
      digest.add({side::LinearRGB2sRGBChannel(static_cast<float>(i) / 64)});
    digest.add(side::CreateLinearRGB2sRGBIndex());
    return 0;
  });
  const side::Matrix3 primaries = {0.64f, 0.30f, 0.15f, 0.33f, 0.60f, 0.06f, 0.03f, 0.10f, 0.79f};
  for (const int32_t tint : {-50, 0, 1, 80}) {
    const std::string on = "tint" + Joined(tint);
    // routine(temperature, matrix) tells whether there is a matrix.
    const auto add = [&](const std::string& name, const auto& routine) {
      table.add(name, on, [&](Digest& digest) {
        int32_t found = 0;
        for (int32_t temperature = -3000; temperature < 47000; temperature += 977) {
          side::Matrix3 matrix = {};
          const bool made = routine(temperature, matrix);
          if (made) digest.add(matrix.data(), 9);
          found += made;
        }
        return found;
      });
    };
    add("GetWhitePoint and Getuvw", [&](int32_t temperature, side::Matrix3& matrix) {
      const side::WhitePoint white = side::GetWhitePoint(temperature, tint);
      const std::array<float, 3> uvw = side::Getuvw(primaries, white);
      matrix = {white.Y, white.x, white.y, uvw[0], uvw[1], uvw[2]};
      return true;
    });
    add("GetRGB2XYZMatrix", [&](int32_t temperature, side::Matrix3& matrix) {
      return side::GetRGB2XYZMatrix(primaries, temperature, tint, &matrix);
    });
    add("GetColorTemperatureMatrix", [&](int32_t temperature, side::Matrix3& matrix) {
      return side::GetColorTemperatureMatrix(temperature, 0, 6500, tint, &matrix);
    });
    add("GetBradfordXYZMatrix", [&](int32_t temperature, side::Matrix3& matrix) {
      return side::GetBradfordXYZMatrix(5000, tint, temperature, 3, &matrix);
    });
    add("GetSRGBColorTemperatureMatrix", [&](int32_t temperature, side::Matrix3& matrix) {
      return side::GetSRGBColorTemperatureMatrix(temperature, tint, 5500, 0, &matrix);
    });
    add("GetStdColorTemperatureMatrix", [&](int32_t temperature, side::Matrix3& matrix) {
      matrix = side::GetStdColorTemperatureMatrix(temperature / 200 - 100, tint);
      return true;
    });
  }
}

void add_workers_of_colour(InternalTable& table, Picture& source) {
  const side::Matrix3 matrices[] = {{1, 0, 0, 0, 1, 0, 0, 0, 1},
                                    {1.5f, 0.25f, -0.125f, 0, 0.75f, 0.5f, -0.5f, 0, 2.25f},
                                    {0, 1, 0, 0, 0, 1, 1, 0, 0},
                                    {-1, 2, -3, 40, -50, 60, 0.001f, 0.002f, 300}};
  for (const side::Matrix3& matrix : matrices) {
    const std::string on = Joined(matrix[0], matrix[1], matrix[2]);
    const auto add = [&](const std::string& name, const auto& apply) {
      add_picture(table, name + on, source, [&](PixelArray& src, PixelArray& dst) {
        apply(&src, &dst, matrix);
        return 0;
      });
    };
    add("ApplyColorTemperatureMatrix", side::ApplyColorTemperatureMatrix);
    add("ApplySRGBColorTemperatureMatrix", side::ApplySRGBColorTemperatureMatrix);
    add("ApplyStdColorTemperatureMatrix", side::ApplyStdColorTemperatureMatrix);
  }
}

void add_tones(InternalTable& table) {
  for (const uint32_t seed : {1u, 2u, 3u})
    table.add("GetMaximumEntropyEstimateGamma", "histogram" + Joined(seed), [&](Digest& digest) {
      Numbers numbers = {seed};
      uint32_t histogram[256];
      for (uint32_t level = 0; level < 256; ++level)
        histogram[level] = numbers.bits() % (1 + level * level * (seed - 1));
      digest.add(side::GetMaximumEntropyEstimateGamma(histogram));
      return 0;
    });
  const side::CurvePoint curves[][4] = {{{0, 0}, {85, 85}, {170, 170}, {255, 255}},
                                        {{0, 0}, {40, 120}, {200, 230}, {255, 255}},
                                        {{10, 250}, {100, 3}, {101, 4}, {240, 9}},
                                        {{0, 0}, {0, 255}, {255, 0}, {255, 255}},
                                        {{32, -9}, {33, 400}, {90, -400}, {128, 300}}};
  int32_t number = 0;
  for (const auto& curve : curves) {
    const std::string on = "curve" + Joined(++number);
    table.add("cubic_to_polyLine", on, [&](Digest& digest) {
      int32_t count = 0;
      for (const float tolerance : {4.0f, 0.1f, 0.001f})
        for (const side::CurvePoint& point : side::cubic_to_polyLine(curve, tolerance)) {
          digest.add(double{point.x});
          digest.add(double{point.y});
          ++count;
        }
      return count;
    });
    table.add("set_look_up_table", on, [&](Digest& digest) {
      float levels[256];
      side::set_look_up_table(levels, 256, curve, 4);
      digest.add(levels, 256);
      return 0;
    });
  }
  for (const int32_t amount : {0, 1, 30, 100}) {
    table.add("lighten_shadow, darken_highlight and midtone_contrast", "amount" + Joined(amount),
              [&](Digest& digest) {
                float levels[256];
                side::lighten_shadow(levels, 256, static_cast<uint32_t>(amount));
                digest.add(levels, 256);
                side::darken_highlight(levels, 256, static_cast<uint32_t>(amount));
                digest.add(levels, 256);
                for (const int32_t contrast : {-amount, amount}) {
                  side::midtone_contrast(levels, 256, contrast);
                  digest.add(levels, 256);
                }
                return 0;
              });
    table.add("update_intensity", "amount" + Joined(amount), [&](Digest& digest) {
      float combined[256], midtone[512], intensity[300], blurred[300];
      side::lighten_shadow(combined, 256, static_cast<uint32_t>(amount));
      side::midtone_contrast(midtone, 256, -amount);
      for (int32_t i = 256; i < 512; ++i) midtone[i] = 255;
      Numbers numbers = {13};
      for (int32_t i = 0; i < 300; ++i) {
        intensity[i] = static_cast<float>(numbers.byte());
        blurred[i] = static_cast<float>(numbers.byte());
      }
      side::update_intensity(intensity, blurred, 300, combined, midtone);
      digest.add(intensity, 300);
      return 0;
    });
  }
  for (int32_t row = 0; row < 8; ++row)
    table.add("LIGHTER_TABLE and DARKER_TABLE", "row" + Joined(row), [&](Digest& digest) {
      for (const uint8_t level : side::lighter_row(row)) digest.add({level});
      for (const uint8_t level : side::darker_row(row)) digest.add({level});
      return 0;
    });
}

void add_workers_of_tone(InternalTable& table, Picture& source) {
  const PixelArray record = record_of(source);
  const PixelRect regions[] = {{0, 0, record.width, record.height},
                               {-3, -3, 2, 9},
                               {1, 2, record.width + 9, record.height + 9},
                               {5, 5, 5, 9}};
  for (const PixelRect& region : regions)
    table.add("GetHistogram_RGB24" + Joined(region.left, region.top, region.right, region.bottom),
              source.name, [&](Digest& digest) {
                const std::vector<uint32_t> histogram = side::GetHistogram_RGB24(&record, &region);
                for (const uint32_t count : histogram) digest.add(int64_t{count});
                return static_cast<int32_t>(histogram.size());
              });
  for (const double gamma : {0.65, 0.9, 1.0, 2.2})
    add_picture(table, "ApplyGamma_RGB24" + Joined(gamma), source,
                [&](PixelArray& src, PixelArray& dst) {
                  side::ApplyGamma_RGB24(&src, &dst, gamma);
                  return 0;
                });
  table.add("get_intensity", source.name, [&](Digest& digest) {
    const std::vector<float> plane = side::get_intensity(record, record.width, record.height);
    digest.add(plane.data(), static_cast<int32_t>(plane.size()));
    return 0;
  });
  for (const uint32_t shadow : {0u, 40u}) {
    add_picture(table, "shadow_highlight" + Joined(shadow), source,
                [&](PixelArray& src, PixelArray& dst) {
                  side::shadow_highlight(src, dst, shadow, 20, -30);
                  return 0;
                });
    add_picture(table, "shadow_highlight_streamed" + Joined(shadow), source,
                [&](PixelArray& src, PixelArray& dst) {
                  side::shadow_highlight_streamed(src, dst, shadow, 20, -30);
                  return 0;
                });
  }
}

std::string internal_rows() {
  InternalTable table;
  add_frame(table);
  add_geometry(table);
  add_parts_of_blurs(table);
  add_colours(table);
  add_white_balance(table);
  add_tones(table);
  for (Picture& source : small_pictures()) {
    add_workers_of_geometry(table, source);
    add_blurs(table, source);
    add_workers_of_colour(table, source);
    add_workers_of_tone(table, source);
  }
  return table.text;
}
