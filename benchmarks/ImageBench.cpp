// The costly steps on the way of an image, one by one.
#include "Screenshot.h"
#include "Suites.h"

#include "base/ImageDecoding.h"
#include "base/PngEncoding.h"
#include "capture/ImageStorage.h"
#include "store/ContentHash.h"

#include <benchmark/benchmark.h>

namespace corvatto::bench {

void addImageFigures() {
    benchmark::RegisterBenchmark("SHA-256 of 33 MB", [](benchmark::State& state) {
        const QByteArray bytes(33'000'000, 'x');
        for (auto _ : state) {
            benchmark::DoNotOptimize(sha256Hex(bytes));
        }
    });
    benchmark::RegisterBenchmark("PNG encoding, 3840x2160", [](benchmark::State& state) {
        const QImage image = screenshot(1);
        for (auto _ : state) {
            benchmark::DoNotOptimize(encodePng(image));
        }
    });
    benchmark::RegisterBenchmark("PNG decoding, 3840x2160", [](benchmark::State& state) {
        const QByteArray png = encodePng(screenshot(1));
        for (auto _ : state) {
            benchmark::DoNotOptimize(decodeImage(png));
        }
    });
    benchmark::RegisterBenchmark("thumbnail of 3840x2160", [](benchmark::State& state) {
        const Image image(screenshot(1));
        constexpr double side = 320; // points
        for (auto _ : state) {
            benchmark::DoNotOptimize(ImageStorage::makeThumbnail(image, side));
        }
    });
}

} // namespace corvatto::bench
