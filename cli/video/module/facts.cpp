#include "cli/video/module/facts.h"

#include <fmt/format.h>

#include "cli/video/module/carry.h"

extern "C" {
#include <libavutil/mastering_display_metadata.h>
#include <libavutil/pixdesc.h>
}

namespace cli {
namespace {

std::string Text(const char* text) {
  return text ? text : "";
}

/// Empty for what is not tagged.
template <class Tag>
std::string NameOf(Tag tag, Tag unspecified, const char* (*name)(Tag)) {
  return tag == unspecified ? "" : Text(name(tag));
}

std::string HdrOf(const AVStream& video, const LightLevels& levels) {
  std::string text;
  if (video.codecpar->color_trc == AVCOL_TRC_SMPTE2084) {
    text = "PQ";
  } else if (video.codecpar->color_trc == AVCOL_TRC_ARIB_STD_B67) {
    text = "HLG";
  }
  if (!levels.display.empty()) {
    const auto& display = *reinterpret_cast<const AVMasteringDisplayMetadata*>(levels.display.data());
    if (display.has_luminance) {
      text += fmt::format("{}mastered at {:g} to {:g} cd/m2", text.empty() ? "" : ", ",
                          av_q2d(display.min_luminance), av_q2d(display.max_luminance));
    }
  }
  if (!levels.content.empty()) {
    const auto& light = *reinterpret_cast<const AVContentLightMetadata*>(levels.content.data());
    text +=
        fmt::format("{}at most {} cd/m2, {} a frame", text.empty() ? "" : ", ", light.MaxCLL, light.MaxFALL);
  }
  return text;
}

std::string TrackOf(const AVStream& stream) {
  const AVCodecParameters& codec = *stream.codecpar;
  std::string text = avcodec_get_name(codec.codec_id);
  if (codec.codec_type == AVMEDIA_TYPE_AUDIO) {
    text += fmt::format(", {} Hz, {} channel{}", codec.sample_rate, codec.ch_layout.nb_channels,
                        codec.ch_layout.nb_channels == 1 ? "" : "s");
  }
  if (const AVDictionaryEntry* language = av_dict_get(stream.metadata, "language", nullptr, 0)) {
    text += fmt::format(", {}", language->value);
  }
  return text;
}

}  // namespace

Facts FactsOf(const AVFormatContext& file, const AVStream& video, const LightLevels& levels) {
  const AVCodecParameters& codec = *video.codecpar;
  Facts facts;
  const auto add = [&](const char* name, const std::string& value) {
    if (!value.empty()) {
      facts.emplace_back(name, value);
    }
  };
  add("format", Text(file.iformat->name));
  add("codec", avcodec_get_name(codec.codec_id));
  add("profile", Text(avcodec_profile_name(codec.codec_id, codec.profile)));
  add("pixel format", Text(av_get_pix_fmt_name(static_cast<AVPixelFormat>(codec.format))));
  if (file.duration != AV_NOPTS_VALUE) {
    add("duration", fmt::format("{:.3f} s", static_cast<double>(file.duration) / AV_TIME_BASE));
  }
  add("matrix", NameOf(codec.color_space, AVCOL_SPC_UNSPECIFIED, av_color_space_name));
  add("primaries", NameOf(codec.color_primaries, AVCOL_PRI_UNSPECIFIED, av_color_primaries_name));
  add("transfer", NameOf(codec.color_trc, AVCOL_TRC_UNSPECIFIED, av_color_transfer_name));
  add("range", codec.color_range == AVCOL_RANGE_JPEG   ? "full"
               : codec.color_range == AVCOL_RANGE_MPEG ? "limited"
                                                       : "");
  add("hdr", HdrOf(video, levels));
  add("fields", codec.field_order > AV_FIELD_PROGRESSIVE ? "interlaced" : "");
  const AVDictionaryEntry* title = av_dict_get(file.metadata, "title", nullptr, 0);
  add("timecode", Text(TimecodeOf(file, video)));
  add("title", title ? title->value : "");
  for (unsigned i = 0; i < file.nb_streams; ++i) {
    const AVMediaType type = file.streams[i]->codecpar->codec_type;
    if (type == AVMEDIA_TYPE_AUDIO || type == AVMEDIA_TYPE_SUBTITLE) {
      add(type == AVMEDIA_TYPE_AUDIO ? "sound" : "subtitles", TrackOf(*file.streams[i]));
    }
  }
  add("chapters", file.nb_chapters > 0 ? fmt::format("{}", file.nb_chapters) : "");
  return facts;
}

}  // namespace cli
