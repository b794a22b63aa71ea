#include "cli/video/module/carry.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <cmath>
#include <utility>

#include "cli/report/error.h"

extern "C" {
#include <libavutil/timecode.h>
}

namespace cli {
namespace {

void CopyTag(const AVDictionary* from, const char* name, AVDictionary** to) {
  if (const AVDictionaryEntry* entry = av_dict_get(from, name, nullptr, 0)) {
    av_dict_set(to, name, entry->value, 0);
  }
}

AVChapter& AddChapter(AVFormatContext& file) {
  auto** chapters = static_cast<AVChapter**>(
      av_realloc_array(file.chapters, file.nb_chapters + std::size_t{1}, sizeof(AVChapter*)));
  file.chapters = Allocated(chapters);
  auto* chapter = Allocated(static_cast<AVChapter*>(av_mallocz(sizeof(AVChapter))));
  file.chapters[file.nb_chapters++] = chapter;
  return *chapter;
}

void CopyChapters(const AVFormatContext& from, const FileRange& range, AVFormatContext& to) {
  constexpr AVRational kMillisecond{1, 1000};
  const auto milliseconds = [](double seconds) { return std::llround(seconds * kMillisecond.den); };
  for (unsigned i = 0; i < from.nb_chapters; ++i) {
    const AVChapter& chapter = *from.chapters[i];
    const double begin = static_cast<double>(chapter.start) * av_q2d(chapter.time_base);
    const double end = static_cast<double>(chapter.end) * av_q2d(chapter.time_base);
    if (end <= range.begin || begin >= range.end) {
      continue;
    }
    AVChapter& copy = AddChapter(to);
    copy.id = chapter.id;
    copy.time_base = kMillisecond;
    copy.start = milliseconds(std::max(begin, range.begin) - range.begin);
    copy.end = milliseconds(std::min(end, range.end) - range.begin);
    av_dict_copy(&copy.metadata, chapter.metadata, 0);
  }
}

/// False when it cannot be carried: it counts at another rate than the frames.
bool CarryTimecode(const char* text, double seconds, AVStream& video) {
  AVTimecode timecode{};
  if (av_timecode_init_from_string(&timecode, video.avg_frame_rate, text, nullptr) < 0) {
    return false;
  }
  char first[AV_TIMECODE_STR_SIZE] = {};
  const auto frames = static_cast<int>(std::llround(seconds * av_q2d(video.avg_frame_rate)));
  av_dict_set(&video.metadata, "timecode", av_timecode_make_string(&timecode, first, frames), 0);
  return true;
}

/// Chapters and the timecode, from a file and its stream of pictures; returns what of it is left out, half a
/// sentence or nothing.
std::string CarryMoments(const AVFormatContext& input, const AVStream* stream, const CarriedFile& source,
                         AVFormatContext& output, AVStream& video) {
  const char* timecode = stream ? TimecodeOf(input, *stream) : nullptr;
  if (source.hasGaps) {
    std::vector<std::string> lost;
    if (input.nb_chapters > 0) {
      lost.emplace_back("chapters");
    }
    if (timecode) {
      lost.push_back(fmt::format("the timecode {}", timecode));
    }
    return lost.empty() ? "" : fmt::format("left out, since frames between are: {}", fmt::join(lost, ", "));
  }
  CopyChapters(input, source.range, output);
  const double start = !stream || stream->start_time == AV_NOPTS_VALUE
                           ? 0
                           : static_cast<double>(stream->start_time) * av_q2d(stream->time_base);
  return timecode && !CarryTimecode(timecode, source.range.begin - start, video)
             ? fmt::format("the timecode {} is left out", timecode)
             : "";
}

/// Timecode and the titles of chapters have tracks of their own in MOV and MP4; both are carried as such.
bool IsCarriedOtherwise(const AVFormatContext& file, const AVStream& stream) {
  constexpr unsigned kTimecode = MKTAG('t', 'm', 'c', 'd');
  constexpr unsigned kText = MKTAG('t', 'e', 'x', 't');
  const AVCodecParameters& codec = *stream.codecpar;
  const bool isTitles = codec.codec_type == AVMEDIA_TYPE_DATA && codec.codec_tag == kText;
  return codec.codec_tag == kTimecode || (isTitles && file.nb_chapters > 0);
}

/// Not counting `pictures`, which may be null.
int CountTracks(const AVFormatContext& file, AVMediaType type, const AVStream* pictures) {
  return static_cast<int>(
      std::count_if(file.streams, file.streams + file.nb_streams, [&](const AVStream* stream) {
        return stream != pictures && stream->codecpar->codec_type == type &&
               !IsCarriedOtherwise(file, *stream);
      }));
}

}  // namespace

const char* TimecodeOf(const AVFormatContext& file, const AVStream& video) {
  const AVDictionaryEntry* entry = av_dict_get(video.metadata, "timecode", nullptr, 0);
  for (unsigned i = 0; !entry && i < file.nb_streams; ++i) {
    entry = av_dict_get(file.streams[i]->metadata, "timecode", nullptr, 0);
  }
  entry = entry ? entry : av_dict_get(file.metadata, "timecode", nullptr, 0);
  return entry ? entry->value : nullptr;
}

std::vector<std::string> CarryOver(const CarriedFile& source, AVFormatContext& output, AVStream& video) {
  const std::filesystem::path& path = source.range.path;
  AvInput input;
  const int error = OpenInput(path, input);
  if (error < 0) {
    RefuseInput(path, LibavMessage(error));
  }
  std::vector<std::string> notes;
  CopyTag(input->metadata, "title", &output.metadata);
  const int index = av_find_best_stream(input.get(), AVMEDIA_TYPE_VIDEO, -1, -1, nullptr, 0);
  const AVStream* stream = index >= 0 ? input->streams[index] : nullptr;
  if (std::string note = CarryMoments(*input, stream, source, output, video); !note.empty()) {
    notes.push_back(std::move(note));
  }
  for (const auto& [type, name] :
       {std::pair{AVMEDIA_TYPE_VIDEO, "further video"}, std::pair{AVMEDIA_TYPE_SUBTITLE, "subtitle"},
        std::pair{AVMEDIA_TYPE_DATA, "data"}, std::pair{AVMEDIA_TYPE_ATTACHMENT, "attachment"}}) {
    if (const int count = CountTracks(*input, type, stream)) {
      notes.push_back(fmt::format("{} {} track{} of '{}' {} left out", count, name, count == 1 ? "" : "s",
                                  path.filename().string(), count == 1 ? "is" : "are"));
    }
  }
  return notes;
}

}  // namespace cli
