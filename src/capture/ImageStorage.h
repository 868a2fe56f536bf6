// Images on their way from the clipboard to disk: reading one from the pasteboard, and storing it as two PNG
// files, full size and thumbnail, both named by the image's content hash.
#pragma once

#include "base/Image.h"
#include "platform/Pasteboard.h"

#include <QString>

#include <optional>

// Sizes are in points unless they say pixels. Failures print their lines and give an absent result. Any
// thread; imageFromPasteboard() the main thread.
namespace corvatto::ImageStorage {

struct SavedImage {
    QString imagePath;     // absolute
    QString thumbnailPath; // absolute; its file may be missing when it could not be written
    QString preview;       // "Image 1920×1080", in pixels
};

// The image on the pasteboard, else what its TIFF or PNG data decode to.
std::optional<Image> imageFromPasteboard(const Pasteboard& pasteboard);

// Writes `hash`.png into both directories, creating them if need be and replacing files of that name. Fails
// when the full-size file cannot be written, but not for a thumbnail that cannot. A failure removes nothing
// that was written before.
std::optional<SavedImage> saveImage(const Image& image, const QString& hash, const QString& imagesDir,
                                    const QString& thumbnailsDir);

// The whole image, scaled so that neither side exceeds `maxSide`; never enlarged. It has two pixels per
// point, so that it stays sharp on dense displays, but no more pixels than the image itself; fractions of a
// pixel are rounded up. Absent when the image has no size.
std::optional<Image> makeThumbnail(const Image& image, double maxSide);

} // namespace corvatto::ImageStorage
