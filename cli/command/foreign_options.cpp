#include "cli/command/foreign_options.h"

#include <algorithm>
#include <iterator>

namespace cli {
namespace {

/// Options of one meaning, with blanks around each, and what is said of them.
struct Meaning {
  std::string_view options;
  const char* instead;
};

constexpr Meaning kMeanings[] = {
    {" -ss -sseof -t -to ", "for a part of a video write --frames 24-71, in frames"},
    {" -frames -frames:v -vframes -range -framerange -frame-range ", "write --frames 0-47"},
    {" -start -end -start-frame -end-frame -first -last -begin ", "write --frames 1-48"},
    {" -frame ", "write --frames 7"},
    {" -start_number ", "the numbers of the files count; write --frames 1-48"},
    {" -pattern_type ", "write numbered pictures as plate.####.png"},
    {" -framerate -rate -r:v -frame-rate ", "write --fps 24"},
    {" -vsync -fps_mode ", "write --fps 25 --retime, or leave it out"},
    {" -loop -stream_loop ", "a picture stays; --frames 0-47 says for how long"},
    {" -shortest ", "the sound ends with the frames"},
    {" -itsoffset ", "the sound stays with its frames"},
    {" -c -codec -c:v -codec:v -vcodec -vc ", "write --codec h264, hevc, prores or ffv1"},
    {" -c:a -codec:a -acodec -audio ", "write --sound copy, aac or none"},
    {" -an -no-audio -no-sound -mute ", "write --sound none"},
    {" -vn -sn -dn -c:s ", "video and sound are kept, subtitles and data are not"},
    {" -af -filter:a -b:a -ar -ac ", "sound is taken as it is, or encoded as AAC; see --sound"},
    {" -map ", "the video and all sound are taken"},
    {" -map_metadata -map_chapters -metadata ", "title, chapters and timecode are those of the input"},
    {" -crf -qp -q -q:v -qscale -qscale:v ", "write --quality 20; less is better"},
    {" -b -b:v -maxrate -bufsize ", "there is no rate of bits to choose; write --quality 20, less is better"},
    {" -preset -preset:v ", "the encoder's own is fixed; --preset flurry is a look of the snow"},
    {" -tune -profile -profile:v -level -g -bf -x264-params -x265-params -x264opts -tag:v -movflags -flags ",
     "the encoder's settings are fixed but for --codec and --quality"},
    {" -f -of -format ", "the name's ending says the format"},
    {" -pix_fmt ", "write --depth 8, 16 or float; the codec decides the rest"},
    {" -d -bits -bitdepth -bit-depth -output-depth -half ", "write --depth 8, 16, half or float"},
    {" -vf -filter -filter:v -filter_complex -lavfi ",
     "snow is all that is drawn; crop or scale before or after"},
    {" -s -width -height -resize -fit -scale -scale:v ",
     "for a smaller picture write --proxy 2; for an empty one --blank 1920x1080"},
    {" -aspect ", "write --pixel-aspect 1.0667; it is a pixel's width over its height"},
    {" -colorspace -colourspace -color_range -color_primaries -color_trc -colorconvert -tocolorspace ",
     "colours stay as the input's tags say; convert before or after"},
    {" -ch -chnames ", "snow falls on R, G, B and A; other channels of an EXR go along"},
    {" -compress ", "write --compression zip"},
    {" -over -layer -snow-only -alpha-only ", "for snow as a layer write --only-snow"},
    {" -n -no-clobber -noclobber ", "write --no-overwrite"},
    {" -force -clobber ", "files are replaced anyway"},
    {" -p ", "write --preset flurry"},
    {" -threads -j -filter_threads ", "write --jobs 4"},
    {" -parallel-frames ", "frames are done in parallel; --jobs 4 says how many"},
    {" -hwaccel ", "decoding is the processor's work; leave it out"},
    {" -hide_banner -loglevel -nostats -nostdin -report -silent ", "for less to read write --quiet"},
    {" -v -vv -verbose -debug -stats -runstats ",
     "there is no more to tell; --progress json tells programs everything"},
};

}  // namespace

std::string InPlaceOf(std::string_view option) {
  if (option.starts_with("--")) {
    option.remove_prefix(1);
  }
  const std::string word = ' ' + std::string(option.substr(0, option.find('='))) + ' ';
  const auto* const found = std::ranges::find_if(kMeanings, [&](const Meaning& meaning) {
    return meaning.options.find(word) != std::string_view::npos;
  });
  return found == std::end(kMeanings) ? "" : found->instead;
}

}  // namespace cli
