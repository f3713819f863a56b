// QImageReader on a picture through the Atari plugin, against QImageReader on
// the same picture saved as PNG and, beside it, on the converter's bitmap
// through Qt's BMP reader: paired in one run, the readers taking turns, all
// from memory. Prints the median microseconds a read for each and the
// ratios; the plugin aims at no slower than PNG.
#include <QBuffer>
#include <QCoreApplication>
#include <QImage>
#include <QImageReader>
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>
#include <vector>

#include "formats/formats.h"

namespace {

using namespace velmoric;
namespace fs = std::filesystem;

constexpr int kRounds = 300;

// The first file of the folder whose name ends in the extension, in either case.
QByteArray firstPicture(const fs::path& folder, const Format& f) {
    std::error_code ec;
    std::vector<fs::path> files;
    for (const auto& entry : fs::recursive_directory_iterator(folder, ec))
        if (entry.is_regular_file() && findFormat(extensionOf(entry.path().filename().string())) == &f)
            files.push_back(entry.path());
    std::sort(files.begin(), files.end());
    for (const fs::path& file : files) {
        std::ifstream in(file, std::ios::binary);
        const std::string b((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
        if (!b.empty()) return QByteArray(b.data(), qsizetype(b.size()));
    }
    return {};
}

QImage readFrom(const QByteArray& bytes, const QByteArray& format) {
    QBuffer buffer;
    buffer.setData(bytes);
    buffer.open(QIODevice::ReadOnly);
    return QImageReader(&buffer, format).read();
}

double microsecondsToRead(const QByteArray& bytes, const QByteArray& format) {
    const auto start = std::chrono::steady_clock::now();
    const QImage image = readFrom(bytes, format);
    const auto end = std::chrono::steady_clock::now();
    if (image.isNull()) return -1;
    return std::chrono::duration<double, std::micro>(end - start).count();
}

double median(std::vector<double> v) {
    std::nth_element(v.begin(), v.begin() + std::ptrdiff_t(v.size() / 2), v.end());
    return v[v.size() / 2];
}

}  // namespace

int main(int argc, char** argv) {
    QCoreApplication::setLibraryPaths({QStringLiteral(VELMORIC_QT_PLUGINS)});
    QCoreApplication app(argc, argv);
    auto staging = std::make_unique<Staging>();
    staging->buildTables();
    const fs::path corpus(VELMORIC_CORPUS_DIR);
    int failures = 0;
    std::printf("%-6s %10s %10s %10s %9s %9s\n", "format", "plugin us", "png us", "bmp us", "vs png", "vs bmp");
    for (const Format& f : formatTable()) {
        QByteArray source = firstPicture(corpus, f);
        if (source.isEmpty()) source = firstPicture(corpus.parent_path() / "synthetic", f);
        if (source.isEmpty()) continue;
        const QByteArray key(f.lower.data(), qsizetype(f.lower.size()));
        const QImage picture = readFrom(source, key);
        const auto bmp = decodeWith(f, *staging, Source{{reinterpret_cast<const std::uint8_t*>(source.constData()),
                                                          std::size_t(source.size())},
                                                         std::uint64_t(source.size())}).bitmap;
        staging->resetToFresh();
        const QByteArray bitmap(reinterpret_cast<const char*>(bmp.data()), qsizetype(bmp.size()));
        QByteArray png;
        QBuffer pngBuffer(&png);
        pngBuffer.open(QIODevice::WriteOnly);
        if (picture.isNull() || !picture.save(&pngBuffer, "PNG")) {
            std::printf("%-6s the plugin read nothing\n", key.constData());
            ++failures;
            continue;
        }
        // The plugin, PNG and BMP; each reads first in a third of the rounds.
        const QByteArray* bytes[3] = {&source, &png, &bitmap};
        const QByteArray formats[3] = {key, "png", "bmp"};
        std::vector<double> times[3];
        for (int round = 0; round < kRounds; ++round)
            for (int turn = 0; turn < 3; ++turn) {
                const int reader = (round + turn) % 3;
                times[reader].push_back(microsecondsToRead(*bytes[reader], formats[reader]));
            }
        if (std::any_of(std::begin(times), std::end(times),
                        [](const auto& t) { return *std::min_element(t.begin(), t.end()) < 0; })) {
            std::printf("%-6s a read failed\n", key.constData());
            ++failures;
            continue;
        }
        const double o = median(times[0]), p = median(times[1]), b = median(times[2]);
        std::printf("%-6s %10.1f %10.1f %10.1f %9.2f %9.2f\n", key.constData(), o, p, b, o / p, o / b);
    }
    return failures == 0 ? 0 : 1;
}
