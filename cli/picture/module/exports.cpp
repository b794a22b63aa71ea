// The module's side.
#include "cli/picture/exports.h"

#include <OpenImageIO/imageio.h>

extern "C" [[gnu::visibility("default")]] const cli::PictureModule* VintrelPictures();

const cli::PictureModule* VintrelPictures() {
  static const cli::PictureModule kModule = [] {
    // Frames go side by side; threads inside of one would only wait for each other.
    OIIO::attribute("exr_threads", -1);
    return cli::PictureModule{&cli::ReadPicture, &cli::EncodePicture};
  }();
  return &kModule;
}
