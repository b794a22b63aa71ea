#include "cli/video/module/color.h"

#include <algorithm>

extern "C" {
#include <libavutil/pixdesc.h>
#include <libswscale/swscale.h>
}

namespace cli {

using minihost::Depth;

bool IsKnown(AVColorSpace matrix) {
  switch (matrix) {
    case AVCOL_SPC_BT709:
    case AVCOL_SPC_BT470BG:
    case AVCOL_SPC_SMPTE170M:
    case AVCOL_SPC_BT2020_NCL:
    case AVCOL_SPC_SMPTE240M:
    case AVCOL_SPC_FCC:
      return true;
    default:
      return false;
  }
}

AVColorSpace MatrixByHeight(int height) {
  return height >= 720 ? AVCOL_SPC_BT709 : AVCOL_SPC_SMPTE170M;
}

ColorTags CompleteTags(ColorTags tags, AVPixelFormat format, int height) {
  if (!IsYuv(format)) {
    tags.matrix = AVCOL_SPC_RGB;
    return tags;
  }
  if (!IsKnown(MatrixOf(tags))) {
    tags.matrix = MatrixByHeight(height);
  }
  const bool high = tags.matrix == AVCOL_SPC_BT709;
  const bool standard = tags.matrix == AVCOL_SPC_SMPTE170M || tags.matrix == AVCOL_SPC_BT470BG;
  if (tags.primaries == AVCOL_PRI_UNSPECIFIED) {
    if (high) {
      tags.primaries = AVCOL_PRI_BT709;
    }
    if (standard) {
      tags.primaries = tags.matrix == AVCOL_SPC_BT470BG ? AVCOL_PRI_BT470BG : AVCOL_PRI_SMPTE170M;
    }
  }
  if (tags.transfer == AVCOL_TRC_UNSPECIFIED) {
    if (high) {
      tags.transfer = AVCOL_TRC_BT709;
    }
    if (standard) {
      tags.transfer = AVCOL_TRC_SMPTE170M;
    }
  }
  return tags;
}

bool IsYuv(AVPixelFormat format) {
  const AVPixFmtDescriptor* desc = av_pix_fmt_desc_get(format);
  return desc && !(desc->flags & (AV_PIX_FMT_FLAG_RGB | AV_PIX_FMT_FLAG_PAL)) && desc->nb_components >= 3;
}

bool HasAlpha(AVPixelFormat format) {
  const AVPixFmtDescriptor* desc = av_pix_fmt_desc_get(format);
  return desc && (desc->flags & AV_PIX_FMT_FLAG_ALPHA);
}

int BitsOf(AVPixelFormat format) {
  const AVPixFmtDescriptor* desc = av_pix_fmt_desc_get(format);
  int bits = 0;
  for (int i = 0; i < desc->nb_components; ++i) {
    bits = std::max(bits, desc->comp[i].depth);
  }
  return bits;
}

Depth DepthOf(AVPixelFormat format) {
  const AVPixFmtDescriptor* desc = av_pix_fmt_desc_get(format);
  const int bits = BitsOf(format);
  if ((desc->flags & AV_PIX_FMT_FLAG_FLOAT) || bits > 15) {
    return Depth::kFloat;
  }
  return bits > 8 ? Depth::kBits16 : Depth::kBits8;
}

std::optional<std::string> WhyUnreadable(AVPixelFormat format) {
  const AVPixFmtDescriptor* desc = av_pix_fmt_desc_get(format);
  if (!desc) {
    return "its pixels cannot be made out; it may be damaged or cut off";
  }
  const bool noColors = (desc->flags & (AV_PIX_FMT_FLAG_HWACCEL | AV_PIX_FMT_FLAG_BAYER)) != 0 ||
                        format == AV_PIX_FMT_XYZ12LE || format == AV_PIX_FMT_XYZ12BE;
  const bool half = (desc->flags & AV_PIX_FMT_FLAG_FLOAT) && desc->comp[0].depth < 32;
  const bool unknownYuv = IsYuv(format) && !sws_isSupportedInput(format);
  if (!noColors && !half && !unknownYuv) {
    return {};
  }
  return std::string("pixels of the format '") + desc->name + "' cannot be read; convert it to RGB or YUV";
}

}  // namespace cli
