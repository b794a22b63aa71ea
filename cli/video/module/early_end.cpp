#include "cli/video/module/early_end.h"

#include <fmt/format.h>

#include <algorithm>
#include <bit>
#include <cstdlib>
#include <optional>
#include <string_view>

extern "C" {
#include <libavutil/parseutils.h>
}

namespace cli {
namespace {

/// How long the stream is by its own account; 0 when it says nothing.
double StatedSeconds(const AVStream& stream) {
  if (stream.duration > 0) {
    return static_cast<double>(stream.duration) * av_q2d(stream.time_base);
  }
  const AVDictionaryEntry* tag = av_dict_get(stream.metadata, "DURATION", nullptr, 0);
  std::int64_t microseconds = 0;
  constexpr int kIsDuration = 1;
  if (!tag || av_parse_time(&microseconds, tag->value, kIsDuration) < 0) {
    return 0;
  }
  return static_cast<double>(microseconds) / 1e6;
}

/// How many pictures Matroska's statistics count; 0 when there are none to be trusted.  This library copies
/// those of the file before along, whatever it cut off.
std::int64_t CountedPictures(const AVFormatContext& file, const AVStream& stream) {
  const AVDictionaryEntry* encoder = av_dict_get(file.metadata, "encoder", nullptr, 0);
  if (encoder && std::string_view(encoder->value).starts_with("Lavf")) {
    return 0;
  }
  // The name may end with a language, as in NUMBER_OF_FRAMES-eng.
  const AVDictionaryEntry* tag =
      av_dict_get(stream.metadata, "NUMBER_OF_FRAMES", nullptr, AV_DICT_IGNORE_SUFFIX);
  return tag ? std::strtoll(tag->value, nullptr, 10) : 0;
}

bool IsFormat(const AVFormatContext& file, std::string_view name) {
  return std::string_view(file.iformat->name).find(name) != std::string_view::npos;
}

/// How many pictures the container itself promises; 0 when it does not say.
std::int64_t PromisedPictures(const AVFormatContext& file, const AVStream& stream) {
  // The index of MOV and MP4 is cut to the edit list, unlike the number in the header.
  return IsFormat(file, "mov")        ? avformat_index_get_entries_count(&stream)
         : IsFormat(file, "matroska") ? CountedPictures(file, stream)
                                      : 0;
}

/// A number of Matroska: as many leading zeros as bytes follow the first; all ones in the rest are unknown,
/// and nothing.
std::optional<std::int64_t> ReadSize(AVIOContext& bytes) {
  const auto first = static_cast<unsigned>(avio_r8(&bytes));
  const int more = std::countl_zero(static_cast<std::uint8_t>(first));
  constexpr int kMost = 7;
  if (more > kMost) {
    return {};
  }
  std::int64_t size = first & (0x7fu >> more);
  for (int i = 0; i < more; ++i) {
    size = size << 8 | avio_r8(&bytes);
  }
  const std::int64_t unknown = (std::int64_t{1} << (7 * (more + 1))) - 1;
  return size == unknown ? std::nullopt : std::optional(size);
}

/// Where a file of Matroska should end by its own account; 0 when it does not say.  Only the size tells of
/// those whose statistics stand at their end.
std::int64_t StatedEnd(AVIOContext& bytes) {
  constexpr unsigned kHeader = 0x1a45dfa3;
  constexpr unsigned kSegment = 0x18538067;
  if (avio_seek(&bytes, 0, SEEK_SET) < 0 || avio_rb32(&bytes) != kHeader) {
    return 0;
  }
  const auto header = ReadSize(bytes);
  if (!header || avio_skip(&bytes, *header) < 0 || avio_rb32(&bytes) != kSegment) {
    return 0;
  }
  const auto segment = ReadSize(bytes);
  return segment ? avio_tell(&bytes) + *segment : 0;
}

}  // namespace

void StreamExtent::Add(const AVPacket& packet) {
  ++packets;
  begin = std::min(begin, packet.pts);
  if (packet.pts + packet.duration >= end) {
    end = packet.pts + packet.duration;
    lastDuration = packet.duration;
  }
  endsInPart = (packet.flags & AV_PKT_FLAG_CORRUPT) != 0;
}

std::string EarlyEnd(const AVFormatContext& file, const AVStream& stream, const StreamExtent& extent) {
  if (file.duration_estimation_method == AVFMT_DURATION_FROM_BITRATE) {
    return {};
  }
  // Some count the length of the last picture, some do not, and some round.
  double tolerance = 0.1;  // seconds
  std::int64_t begin = extent.begin;
  if (IsFormat(file, "matroska")) {
    // Most writers count from 0, not from the first picture.
    begin = std::min<std::int64_t>(begin, 0);
    if (extent.lastDuration > 0) {
      constexpr double kRounding = 0.002;
      tolerance =
          std::max(kRounding, static_cast<double>(extent.lastDuration) * av_q2d(stream.time_base) / 2);
    }
  }
  const double due = StatedSeconds(stream);
  const double found = static_cast<double>(extent.end - begin) * av_q2d(stream.time_base);
  const std::int64_t promised = PromisedPictures(file, stream);
  const std::int64_t whole = extent.packets - (extent.endsInPart && promised > 0 ? 1 : 0);
  if (due > found + tolerance) {
    return fmt::format("it lasts {:.2f} of {:.2f} seconds", found, due);
  }
  if (promised > whole) {
    return fmt::format("of its {} pictures {} {} missing", promised, promised - whole,
                       promised - whole == 1 ? "is" : "are");
  }
  if (IsFormat(file, "matroska") && file.pb) {
    const std::int64_t size = avio_size(file.pb);
    const std::int64_t stated = StatedEnd(*file.pb);
    if (size >= 0 && stated > size) {
      return fmt::format("it has {} of {} bytes", size, stated);
    }
  }
  return {};
}

}  // namespace cli
