#include "io/AviWriter.h"

#include "io/VQDReader.h"

#include <cmath>
#include <iostream>
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>
#include <opencv2/videoio.hpp>
#include <sys/stat.h>
#include <unordered_set>

namespace Tessaly {

namespace {

constexpr double framesPerSecond = 25.0;
constexpr int averageFrameRepeats = 100;

std::vector<std::uint8_t> imageOf(VQDReader& reader, std::int32_t event, int* width, int* height)
{
    if (event < 0)
        return {};
    return reader.getImage(static_cast<std::size_t>(event), width, height);
}

cv::Mat averageImage(VQDReader& reader, const std::vector<std::int32_t>& events, int width, int height)
{
    cv::Mat sum = cv::Mat::zeros(height, width, CV_64FC1);
    int count = 0;
    for (std::int32_t event : events) {
        int w = 0;
        int h = 0;
        std::vector<std::uint8_t> pixels = imageOf(reader, event, &w, &h);
        if (pixels.empty() || w != width || h != height)
            continue;
        cv::Mat grey(height, width, CV_8UC1, pixels.data());
        cv::accumulate(grey, sum);
        ++count;
    }
    cv::Mat average;
    if (count > 0)
        sum.convertTo(average, CV_8UC1, 1.0 / count);
    return average;
}

} // namespace

std::vector<bool> firstEventOfFrame(
    const std::vector<std::int32_t>& events, const std::vector<double>& frames)
{
    std::vector<bool> keep(events.size(), true);
    if (frames.empty())
        return keep;
    std::unordered_set<long long> seen;
    for (std::size_t i = 0; i < events.size(); ++i) {
        const auto event = static_cast<std::size_t>(events[i]);
        if (events[i] < 0 || event >= frames.size() || !std::isfinite(frames[event]))
            continue;
        keep[i] = seen.insert(static_cast<long long>(std::trunc(frames[event]))).second;
    }
    return keep;
}

AviResult writeAvi(const std::string& path, VQDReader& reader, const AviExport& video)
{
    if (!reader.hasImage())
        return AviResult::NoImages;
    if (video.events.empty())
        return AviResult::NoEvents;
    int width = 0;
    int height = 0;
    if (imageOf(reader, video.events.front(), &width, &height).empty() || width < 1 || height < 1)
        return AviResult::NoDimensions;

    const int fourcc = video.mjpeg ? cv::VideoWriter::fourcc('M', 'J', 'P', 'G') : 0;
    cv::VideoWriter writer;
    try {
        writer.open(path, cv::CAP_ANY, fourcc, framesPerSecond, cv::Size(width, height), true);
    } catch (const cv::Exception& e) {
        std::cerr << ("Error creating video '" + path + "': " + e.what() + '\n') << std::flush;
    }
    if (!writer.isOpened())
        return AviResult::CannotCreate;

    cv::Mat colour;
    if (video.reanalysis) {
        const cv::Mat average = averageImage(reader, video.events, width, height);
        if (!average.empty()) {
            cv::cvtColor(average, colour, cv::COLOR_GRAY2BGR);
            for (int i = 0; i < averageFrameRepeats; ++i)
                writer.write(colour);
        }
    }

    // The frame column is read only when it matters; the first event of each frame wins.
    const std::vector<bool> keep = video.skipDuplicates && reader.hasFeature("frame")
        ? firstEventOfFrame(video.events, reader.getFeature("frame"))
        : std::vector<bool>(video.events.size(), true);
    for (std::size_t i = 0; i < video.events.size(); ++i) {
        if (!keep[i])
            continue;
        int w = 0;
        int h = 0;
        std::vector<std::uint8_t> pixels = imageOf(reader, video.events[i], &w, &h);
        if (pixels.empty() || w != width || h != height)
            continue;
        const cv::Mat grey(height, width, CV_8UC1, pixels.data());
        cv::cvtColor(grey, colour, cv::COLOR_GRAY2BGR);
        writer.write(colour);
    }
    writer.release();

    // The video writer reports no failure of its own; a file that isn't there or holds nothing is one.
    struct stat info;
    if (::stat(path.c_str(), &info) != 0 || info.st_size == 0)
        return AviResult::WriteFailed;
    return AviResult::Written;
}

} // namespace Tessaly
