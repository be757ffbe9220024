// The nearest OpenCV call or chain of calls for each operation, single-threaded. None gives the
// same picture; they are what a program would otherwise call for the purpose.
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>

#include <cmath>
#include <vector>

#include "support/bench.h"

namespace {

cv::Mat colour_mat(const PixelArray& image) {
  return cv::Mat(image.height, image.width, CV_8UC3, image.pixels,
                 static_cast<size_t>(image.rowBytes));
}

cv::Mat grey_mat(const PixelArray& image) {
  return cv::Mat(image.height, image.width, CV_8UC1, image.pixels,
                 static_cast<size_t>(image.rowBytes));
}

void rotate(const bench::Pictures& p, double degrees) {
  cv::Mat src = colour_mat(p.src), dst = colour_mat(p.dst);
  const cv::Point2f centre(static_cast<float>(src.cols / 2), static_cast<float>(src.rows / 2));
  cv::warpAffine(src, dst, cv::getRotationMatrix2D(centre, -degrees, 1.0), src.size(),
                 cv::INTER_LINEAR, cv::BORDER_TRANSPARENT);
}

void perspective(const bench::Pictures& p) {
  cv::Mat src = colour_mat(p.src), dst = colour_mat(p.dst);
  const float w = static_cast<float>(src.cols), h = static_cast<float>(src.rows);
  const cv::Point2f from[4] = {{w * 3 / 40, h / 12},
                               {w * 37 / 40, h / 25},
                               {w * 77 / 80, h * 14 / 15},
                               {w * 3 / 80, h * 29 / 30}};
  const cv::Point2f onto[4] = {{0, 0}, {w, 0}, {w, h}, {0, h}};
  cv::warpPerspective(src, dst, cv::getPerspectiveTransform(onto, from), src.size(),
                      cv::INTER_LINEAR | cv::WARP_INVERSE_MAP, cv::BORDER_TRANSPARENT);
}

void soft_focus(const bench::Pictures& p, int length) {
  cv::Mat src = colour_mat(p.src), dst = colour_mat(p.dst);
  const cv::Size window(length, length);
  cv::blur(src, dst, window);
  cv::blur(dst, dst, window);
  cv::blur(dst, dst, window);
}

void soft_focus_masked(const bench::Pictures& p, int length) {
  soft_focus(p, length);
  const cv::Mat src = colour_mat(p.src);
  cv::Mat dst = colour_mat(p.dst);
  static cv::Mat mask, mask3, difference;
  const cv::Size window(length, length);
  cv::blur(grey_mat(p.mask), mask, window);
  cv::blur(mask, mask, window);
  cv::blur(mask, mask, window);
  cv::merge(std::vector<cv::Mat>{mask, mask, mask}, mask3);
  cv::subtract(src, dst, difference, cv::noArray(), CV_16S);
  cv::multiply(difference, mask3, difference, 1.0 / 256, CV_16S);
  cv::add(dst, difference, dst, cv::noArray(), CV_8U);
}

// A hard selection in HSV: no metric, no falloff.
cv::Mat selection(const cv::Mat& hsv) {
  static cv::Mat mask;
  cv::inRange(hsv, cv::Scalar(0, 60, 60), cv::Scalar(25, 255, 255), mask);
  return mask;
}

const bench::Registration peers([] {
  cv::setNumThreads(1);
  bench::peer("rotate 7.3", [](const bench::Pictures& p) { rotate(p, 7.3); });
  bench::peer("rotate 45", [](const bench::Pictures& p) { rotate(p, 45); });
  bench::peer("rotate 85", [](const bench::Pictures& p) { rotate(p, 85); });
  bench::peer("straighten 1", [](const bench::Pictures& p) { rotate(p, 1); });
  bench::peer("affine", perspective);
  bench::peer("perspective", perspective);
  bench::peer("soft focus 21", [](const bench::Pictures& p) { soft_focus(p, 21); });
  bench::peer("soft focus 21 masked", [](const bench::Pictures& p) { soft_focus_masked(p, 21); });
  bench::peer("replace colour", [](const bench::Pictures& p) {
    cv::Mat dst = colour_mat(p.dst);
    static cv::Mat hsv;
    cv::cvtColor(colour_mat(p.src), hsv, cv::COLOR_BGR2HSV);
    const cv::Mat mask = selection(hsv);
    cv::add(hsv, cv::Scalar(20, 25, 13), hsv, mask);
    cv::cvtColor(hsv, dst, cv::COLOR_HSV2BGR);
  });
  bench::peer("mask", [](const bench::Pictures& p) {
    cv::Mat dst = colour_mat(p.dst);
    static cv::Mat hsv;
    cv::cvtColor(colour_mat(p.src), hsv, cv::COLOR_BGR2HSV);
    cv::cvtColor(selection(hsv), dst, cv::COLOR_GRAY2BGR);
  });
  bench::peer("tint", [](const bench::Pictures& p) {
    cv::Mat src = colour_mat(p.src), dst = colour_mat(p.dst);
    static cv::Mat hsv, grey;
    cv::cvtColor(src, hsv, cv::COLOR_BGR2HSV);
    cv::cvtColor(src, grey, cv::COLOR_BGR2GRAY);
    cv::cvtColor(grey, dst, cv::COLOR_GRAY2BGR);
    src.copyTo(dst, selection(hsv));
  });
  bench::peer("temperature", [](const bench::Pictures& p) {
    // To linear light in 16 bits, gains, and back through 8 bits; no cap and no spill.
    static const cv::Mat to_linear = [] {
      cv::Mat table(1, 256, CV_16U);
      for (int i = 0; i < 256; ++i)
        table.at<uint16_t>(i) = static_cast<uint16_t>(4096 * std::pow(i / 255.0, 2.2));
      return table;
    }();
    static const cv::Mat from_linear = [] {
      cv::Mat table(1, 256, CV_8U);
      for (int i = 0; i < 256; ++i)
        table.at<uint8_t>(i) = static_cast<uint8_t>(255 * std::pow(i / 255.0, 1 / 2.2));
      return table;
    }();
    static cv::Mat light, narrow;
    cv::Mat dst = colour_mat(p.dst);
    cv::LUT(colour_mat(p.src), to_linear, light);
    cv::multiply(light, cv::Scalar(0.82, 0.92, 1.33), light);
    light.convertTo(narrow, CV_8U, 255.0 / 4096);
    cv::LUT(narrow, from_linear, dst);
  });
  bench::peer("auto gamma", [](const bench::Pictures& p) {
    cv::Mat src = colour_mat(p.src), dst = colour_mat(p.dst), histogram, table(1, 256, CV_8U);
    const int channel = 1, bins = 256;
    const float range[2] = {0, 256};
    const float* ranges = range;
    cv::calcHist(&src, 1, &channel, cv::Mat(), histogram, 1, &bins, &ranges);
    for (int i = 0; i < 256; ++i)
      table.at<uint8_t>(i) = static_cast<uint8_t>(255 * std::pow(i / 255.0, 0.8));
    cv::LUT(src, table, dst);
  });
  bench::peer("shadow/highlight", [](const bench::Pictures& p) {
    // The change of intensity from a ratio of the blurred plane, added to all channels.
    const cv::Mat src = colour_mat(p.src);
    cv::Mat dst = colour_mat(p.dst);
    static cv::Mat grey, intensity, blurred, ratio, change, change3;
    cv::cvtColor(src, grey, cv::COLOR_BGR2GRAY);
    grey.convertTo(intensity, CV_32F);
    cv::blur(intensity, blurred, cv::Size(9, 9));
    cv::divide(intensity, blurred + 1.0, ratio);
    cv::multiply(ratio, intensity, change);
    cv::subtract(change, intensity, change);
    cv::merge(std::vector<cv::Mat>{change, change, change}, change3);
    cv::add(src, change3, dst, cv::noArray(), CV_8U);
  });
  bench::peer("variations", [](const bench::Pictures& p) {
    static const cv::Mat tables = [] {
      cv::Mat made(1, 256, CV_8UC3);
      for (int i = 0; i < 256; ++i)
        for (int c = 0; c < 3; ++c)
          made.at<cv::Vec3b>(i)[c] = static_cast<uint8_t>(255 * std::pow(i / 255.0, 0.8 + 0.1 * c));
      return made;
    }();
    cv::Mat dst = colour_mat(p.dst);
    cv::LUT(colour_mat(p.src), tables, dst);
  });
});

}  // namespace
