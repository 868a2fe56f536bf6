#include "Fuzz.h"
#include "base/ImageDecoding.h"
#include "base/PngEncoding.h"

using namespace corvatto;

// What looks like an image either is one, of a bearable size, that can be stored, or is refused.
void fuzz::image(const QByteArray& input) {
    const auto image = decodeImage(input);
    if (!image) {
        return;
    }
    fuzz::require(looksDecodable(input) && !image->isNull() &&
                  image->sizeInBytes() <= maximumDecodedImageBytes);
    if (image->width() <= 256 && image->height() <= 256) { // larger ones only take longer
        const auto stored = decodeImage(encodePng(*image));
        fuzz::require(stored && stored->size() == image->size());
    }
}
