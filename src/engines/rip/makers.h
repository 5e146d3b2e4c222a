#pragma once

#include "components/AudioFile.h"
#include "components/CDRipperX.h"

#include <QString>

#include <functional>
#include <memory>

namespace zib {

/// The ripper of the program: the drives of this machine, then the disc images.
/// @param imagesFolder where CUE sheets and TOC files with their files lie; need not exist.
/// @param makeSound makes readers for images of WAVE and MP3 files, on any thread; without it these images
/// cannot be read.
std::unique_ptr<CDRipperX> makeRipper(const QString& imagesFolder,
                                      std::function<std::unique_ptr<AudioFile>()> makeSound = {});

} // namespace zib
