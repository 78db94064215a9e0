#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace Tessaly {

class VQDReader;

struct AviExport
{
    std::vector<std::int32_t> events;
    // Motion JPEG; otherwise uncompressed frames.
    bool mjpeg = true;
    // One event per camera frame: of events sharing a "frame" value only the first is written.
    bool skipDuplicates = false;
    // 100 frames of the average image before the events.
    bool reanalysis = false;
};

enum class AviResult {
    Written,
    NoImages, // the dataset has no images
    NoEvents,
    NoDimensions, // the first event's image can't be read
    CannotCreate, // the video writer doesn't open the file
    WriteFailed, // the file is missing or empty after writing
};

// Writes the events' images as a colour video at 25 frames per second, each frame of the first
// event's size. Events without an image are passed over.
AviResult writeAvi(const std::string& path, VQDReader& reader, const AviExport& video);

// Positions in `events` that a video with one event per camera frame keeps: the first event of every
// truncated frame number. A NaN frame number is never a duplicate. Without a frame column, all.
std::vector<bool> firstEventOfFrame(
    const std::vector<std::int32_t>& events, const std::vector<double>& frames);

} // namespace Tessaly
