#include "cli/video/module/reader.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <string_view>

#include "cli/report/error.h"
#include "cli/video/module/facts.h"
#include "cli/video/module/pixels_in.h"

extern "C" {
#include <libavutil/pixdesc.h>
}

namespace cli {
namespace {

using minihost::Image;

const char* NameOfAssumed(AVColorSpace matrix) {
  return matrix == AVCOL_SPC_BT709 ? "BT.709" : "BT.601";
}

double PixelAspectOf(AVFormatContext& file, AVStream& stream) {
  const AVRational aspect = av_guess_sample_aspect_ratio(&file, &stream, nullptr);
  return aspect.num > 0 && aspect.den > 0 ? PlausibleAspect(av_q2d(aspect)) : 1;
}

/// Of a number with 16 bits behind the point; nearly 0 is 0.
int Sign(std::int32_t fixed) {
  constexpr std::int32_t kNothing = 1 << 8;
  return fixed > kNothing ? 1 : fixed < -kNothing ? -1 : 0;
}

/// How the video asks to be turned when it is shown, as most phones do: the number of an Orientation, 1 when
/// it asks for nothing; empty when it asks for other than right angles and mirrors.
std::optional<int> OrientationOf(const AVStream& stream) {
  const auto* bytes = av_stream_get_side_data(&stream, AV_PKT_DATA_DISPLAYMATRIX, nullptr);
  if (!bytes) {
    return 1;
  }
  // Rows of three: where a step to the right leads, where a step down does, and the place; the last column is
  // of perspective.
  const auto* matrix = reinterpret_cast<const std::int32_t*>(bytes);
  for (int number = 1; number <= 8; ++number) {
    const Orientation orientation(number, {2, 2});
    const auto leads = [&](int column, int row, const std::int32_t* step) {
      const auto from = orientation.Find(0, 0);
      const auto to = orientation.Find(column, row);
      return to.column - from.column == Sign(step[0]) && to.row - from.row == Sign(step[1]);
    };
    if (leads(1, 0, matrix) && leads(0, 1, matrix + 3)) {
      return number;
    }
  }
  return {};
}

}  // namespace

VideoReader::VideoReader(const std::filesystem::path& path, const VideoInput& input)
    : path_(path), alpha_(input.alpha), decoder_(path) {
  if (input.retimed) {
    decoder_.Retime(*input.retimed);
  }
  FillTraits(input.depth);
  ReadLightLevels();
  NoteWhatIsIgnored();
}

void VideoReader::FillTraits(std::optional<minihost::Depth> depth) {
  const AVCodecParameters& video = *decoder_.Stream().codecpar;
  const auto format = static_cast<AVPixelFormat>(video.format);
  if (const auto reason = WhyUnreadable(format)) {
    RefuseInput(path_, *reason);
  }
  const auto [shortSide, longSide] = std::minmax(video.width, video.height);
  if (shortSide < 1 || longSide > Image::kMaxSide) {
    RefuseInput(path_, fmt::format("it is {} x {} pixels; 1 to {} a side can be drawn on", video.width,
                                   video.height, Image::kMaxSide));
  }
  stored_ = {video.width, video.height};
  orientation_ = OrientationOf(decoder_.Stream());
  const Orientation orientation(orientation_.value_or(1), stored_);
  traits_.width = orientation.Upright().width;
  traits_.height = orientation.Upright().height;
  traits_.depth = depth.value_or(DepthOf(format));
  traits_.hasAlpha = HasAlpha(format);
  traits_.pixelAspect = orientation.UprightAspect(PixelAspectOf(decoder_.File(), decoder_.Stream()));
  traits_.rate = decoder_.Index().Rate();
  traits_.firstFrame = 0;
  constexpr std::int64_t kMost = std::numeric_limits<std::int32_t>::max();
  traits_.lastFrame = static_cast<std::int32_t>(std::min(decoder_.Index().FrameCount() - 1, kMost));
  tags_ = {video.color_space, video.color_primaries, video.color_trc};
  if (IsYuv(format)) {
    ChooseCoding(format);
  }
}

void VideoReader::ChooseCoding(AVPixelFormat format) {
  const AVCodecParameters& video = *decoder_.Stream().codecpar;
  if (tags_.matrix == AVCOL_SPC_BT2020_CL) {
    tags_.matrix = AVCOL_SPC_BT2020_NCL;
    notes_.emplace_back(
        "colour of constant luminance is read as that of "
        "non-constant luminance");
  } else if (!IsKnown(MatrixOf(tags_))) {
    const char* name = av_color_space_name(MatrixOf(tags_));
    const AVColorSpace assumed = MatrixByHeight(video.height);
    notes_.push_back(tags_.matrix == AVCOL_SPC_UNSPECIFIED
                         ? fmt::format("the colour matrix is not tagged; {} lines are read as {}",
                                       video.height, NameOfAssumed(assumed))
                         : fmt::format("the colour matrix '{}' is not known; it is read as {}",
                                       name ? name : "?", NameOfAssumed(assumed)));
    tags_.matrix = assumed;
  }
  const bool full = std::string_view(av_get_pix_fmt_name(format)).starts_with("yuvj");
  coding_ = {MatrixOf(tags_), full ? AVCOL_RANGE_JPEG : video.color_range};
  if (coding_.range == AVCOL_RANGE_UNSPECIFIED) {
    coding_.range = AVCOL_RANGE_MPEG;
    notes_.emplace_back(
        "the colour range is not tagged; it is read as limited "
        "(16 to 235 of 255)");
  }
}

/// The container has them, or only the first picture, as a message of the codec.
void VideoReader::ReadLightLevels() {
  const auto fromStream = [&](AVPacketSideDataType type) {
    std::size_t size = 0;
    const std::uint8_t* bytes = av_stream_get_side_data(&decoder_.Stream(), type, &size);
    return bytes ? std::vector(bytes, bytes + size) : std::vector<std::uint8_t>();
  };
  levels_.display = fromStream(AV_PKT_DATA_MASTERING_DISPLAY_METADATA);
  levels_.content = fromStream(AV_PKT_DATA_CONTENT_LIGHT_LEVEL);
  const bool isHdr = tags_.transfer == AVCOL_TRC_SMPTE2084 || tags_.transfer == AVCOL_TRC_ARIB_STD_B67;
  if (!isHdr || (!levels_.display.empty() && !levels_.content.empty())) {
    return;
  }
  try {
    const AVFrame& first = decoder_.Decode(0);
    const auto complete = [&](std::vector<std::uint8_t>& bytes, AVFrameSideDataType type) {
      const AVFrameSideData* data = av_frame_get_side_data(&first, type);
      if (data && bytes.empty()) {
        bytes.assign(data->data, data->data + data->size);
      }
    };
    complete(levels_.display, AV_FRAME_DATA_MASTERING_DISPLAY_METADATA);
    complete(levels_.content, AV_FRAME_DATA_CONTENT_LIGHT_LEVEL);
  } catch (const DecodeFailure&) {
    // Whoever asks for the frame hears of it.
    return;
  }
}

int VideoReader::Bits() const {
  return BitsOf(static_cast<AVPixelFormat>(decoder_.Stream().codecpar->format));
}

FieldOrder VideoReader::Fields() const {
  constexpr int kMirrored = 2;  // left to right, the only change that keeps lines in their places
  if (orientation_.value_or(1) > kMirrored) {
    return FieldOrder::kProgressive;
  }
  switch (decoder_.Stream().codecpar->field_order) {
    case AV_FIELD_TT:
    case AV_FIELD_BT:
      return FieldOrder::kTopFirst;
    case AV_FIELD_BB:
    case AV_FIELD_TB:
      return FieldOrder::kBottomFirst;
    default:
      return FieldOrder::kProgressive;
  }
}

void VideoReader::NoteWhatIsIgnored() {
  const VideoIndex& index = decoder_.Index();
  if (!orientation_) {
    notes_.emplace_back("the file asks to be shown turned askew; that is not heeded");
  }
  if (decoder_.Stream().codecpar->field_order > AV_FIELD_PROGRESSIVE) {
    notes_.emplace_back("the video is interlaced; both fields are taken as one picture");
  }
  if (!index.IsConstantRate() && !index.IsRetimed()) {
    notes_.push_back(
        fmt::format("the frame rate varies; {} pictures are shown "
                    "as {} frames at {:.3f} a second",
                    index.PictureCount(), index.FrameCount(),
                    static_cast<double>(traits_.rate->timeScale) / traits_.rate->timeStep));
  }
  if (!index.Damage().empty()) {
    notes_.push_back("the file " + VideoReader::Damage());
  }
}

std::string VideoReader::Damage() const {
  const VideoIndex& index = decoder_.Index();
  return index.Damage().empty() ? ""
                                : fmt::format("breaks off after {} picture{}: {}", index.PictureCount(),
                                              index.PictureCount() == 1 ? "" : "s", index.Damage());
}

Facts VideoReader::About() const {
  return FactsOf(decoder_.File(), decoder_.Stream(), levels_);
}

bool VideoReader::IsStill() const {
  const std::string_view format = decoder_.File().iformat->name;
  return decoder_.Index().PictureCount() == 1 && (format.ends_with("_pipe") || format == "image2");
}

std::optional<FileRange> VideoReader::Sound(std::int32_t first, std::int32_t last) const {
  const AVFormatContext& file = decoder_.File();
  const bool hasSound = std::any_of(file.streams, file.streams + file.nb_streams, [](const AVStream* stream) {
    return stream->codecpar->codec_type == AVMEDIA_TYPE_AUDIO;
  });
  if (!hasSound) {
    return {};
  }
  return Range(first, last);
}

FileRange VideoReader::Range(std::int32_t first, std::int32_t last) const {
  const double frameSeconds = static_cast<double>(traits_.rate->timeStep) / traits_.rate->timeScale;
  const double start = decoder_.Index().StartSeconds();
  return {path_, start + first * frameSeconds, start + (last + 1.0) * frameSeconds};
}

std::optional<Picture> VideoReader::Read(std::int32_t frame) {
  const auto refuse = [&](const std::string& reason) {
    Refuse(ExitCode::kInput, "cannot read frame {} of '{}': {}", frame, path_.string(), reason);
  };
  if (frame < 0 || frame >= decoder_.Index().FrameCount()) {
    return {};
  }
  Picture picture;
  picture.traits.hasAlpha = traits_.hasAlpha;
  picture.traits.pixelAspect = traits_.pixelAspect;
  const bool light = traits_.hasAlpha && alpha_ == AlphaForm::kPremultiplied;
  picture.traits.clearColor = light ? ClearColor::kLight : ClearColor::kHidden;
  try {
    const AVFrame& decoded = decoder_.Decode(decoder_.Index().PictureAt(frame));
    if (decoded.width != stored_.width || decoded.height != stored_.height) {
      refuse(fmt::format("it is {} x {} pixels, the first frame {} x {}", decoded.width, decoded.height,
                         stored_.width, stored_.height));
    }
    if (const auto reason = WhyUnreadable(static_cast<AVPixelFormat>(decoded.format))) {
      refuse(*reason);
    }
    picture.image = TurnUpright(DecodePixels(decoded, coding_, traits_.depth, alpha_),
                                Orientation(orientation_.value_or(1), stored_));
  } catch (const DecodeFailure& failure) {
    refuse(failure.what());
  }
  return picture;
}

std::unique_ptr<VideoSource> OpenVideo(const std::filesystem::path& path, const VideoInput& input) {
  return std::make_unique<VideoReader>(path, input);
}

}  // namespace cli
