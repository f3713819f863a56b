// Atari pictures for the desktop, in what the installed plugins' checks
// (tests/desktop) cannot show: why a file is refused, the lines of a plain
// picture that is cut short, thumbnails' sizes and blocks, and the
// thumbnailer's errors.
#include <sstream>

#include "desktop/desktopimage.h"
#include "desktop/thumbnail.h"
#include "support.h"

using namespace velmoric;

namespace {

// The thumbnailer's exit status and what it wrote to its error stream.
std::pair<int, std::string> thumbnail(std::vector<std::string> args) {
    args.insert(args.begin(), "velmoric-thumbnailer");
    std::vector<char*> argv;
    for (auto& a : args) argv.push_back(a.data());
    std::ostringstream err;
    const int status = desktop::runThumbnailer(int(argv.size()), argv.data(), err);
    return {status, err.str()};
}

TEST(DesktopPicture, APlainPictureCutAfterItsFirstRowsShowsThemLinesDoubled) {
    const vtest::Bytes whole = vtest::readFile((vtest::corpusDir() / "../synthetic/pi2_000.PI2").string());
    if (whole.empty()) GTEST_SKIP() << "no synthetic pictures";
    const vtest::Bytes part(whole.begin(), whole.begin() + 34 + 160 * 20);  // 20 rows
    const auto full = desktop::decodeForDesktop(*findFormat("pi2"), whole, whole.size());
    const auto cut = desktop::decodeForDesktop(*findFormat("pi2"), part, part.size());
    ASSERT_TRUE(full.ok && cut.ok) << cut.error;
    EXPECT_EQ(cut.height, 400);
    // The whole picture's doubled lines are checked against the converter by the installed plugins.
    ASSERT_EQ(cut.indices.size(), full.indices.size());
    EXPECT_TRUE(std::equal(full.indices.begin(), full.indices.begin() + 40 * 640, cut.indices.begin()));
}

bool isPlainScreen(const Format& f) { return f.routine == "degas1" || f.routine == "degas2" || f.routine == "degas3"; }

// Whether the first `length` bytes of `file` give another picture when
// every byte behind them is set than when it is clear: in the top row alone
// for a plain screen, which shows what it has below.
bool needsMore(const Format& format, const vtest::Bytes& file, std::size_t length) {
    const auto decode = [&](std::uint8_t fill) {
        vtest::Bytes padded(file.begin(), file.begin() + std::ptrdiff_t(length));
        padded.resize(kSourceLimit, fill);
        return vtest::bytesOf(decodeWith(format, *vtest::freshStaging(), Source{padded, length}).bitmap);
    };
    const vtest::Bytes clear = decode(0), set = decode(0xFF);
    const std::size_t topRow = isPlainScreen(format) && !set.empty() ? set.size() - (format.kind == 3 ? 80 : 160) : 0;
    return clear.size() != set.size() || !std::equal(set.begin() + std::ptrdiff_t(topRow), set.end(), clear.begin() + std::ptrdiff_t(topRow));
}

// A plain picture cut short is refused exactly when its top row needs
// bytes the file lacks; a packed one when its decoder read past the file's
// end, and no picture it keeps depends on bytes the file does not have.
TEST(DesktopPicture, ACutFileIsRefusedWhenItsPictureNeedsMissingBytes) {
    const auto shared = vtest::corpusDir().parent_path();
    if (!vtest::fs::exists(shared / "synthetic")) GTEST_SKIP() << "no shared pictures";
    int checked = 0;
    for (const auto& entry : vtest::fs::recursive_directory_iterator(shared)) {
        const std::string ext = entry.path().extension().string();
        const Format* format = ext.empty() ? nullptr : desktop::formatForKey(ext.substr(1));
        if (!format || !entry.is_regular_file()) continue;
        const vtest::Bytes file = vtest::readFile(entry.path().string());
        const auto staging = vtest::freshStaging();
        const Decoded whole = decodeWith(*format, *staging, Source{file, file.size()});
        if (whole.rejected || file.size() >= kSourceLimit) continue;
        const bool plain = isPlainScreen(*format);
        const std::size_t end = whole.sourceEnd;
        EXPECT_TRUE(plain || end <= file.size()) << entry.path() << " ends before its picture";
        for (const std::size_t cut : plain ? std::vector<std::size_t>{113, 114, 193, 194, 287, 288}
                                           : std::vector<std::size_t>{end - 1, end}) {
            const bool refused = !desktop::decodeForDesktop(*format, std::span(file).first(cut), cut).ok;
            EXPECT_EQ(refused, plain ? needsMore(*format, file, cut) : cut < end) << entry.path() << " cut to " << cut;
            EXPECT_TRUE(refused || !needsMore(*format, file, cut)) << entry.path() << " cut to " << cut;
        }
        ++checked;
    }
    EXPECT_GT(checked, 100);
}

TEST(DesktopThumbnail, KeepsProportionsEnlargesInWholeBlocksAndShrinksByTheMean) {
    const struct { int width, height, size, thumbWidth, thumbHeight; } cases[] = {
        {320, 200, 128, 128, 80},  {640, 400, 256, 256, 160}, {576, 720, 256, 205, 256},  {320, 200, 512, 320, 200},
        {320, 200, 1024, 960, 600}, {640, 400, 320, 320, 200}, {576, 720, 1024, 576, 720}};
    for (const auto& c : cases) {
        desktop::DesktopPicture p;
        p.width = c.width, p.height = c.height;
        for (int y = 0; y < c.height; ++y)  // a chequer board of single pixels
            for (int x = 0; x < c.width; ++x) p.pixels.push_back((x + y) % 2 ? 0xFFFFFF : std::uint32_t(x * 7 + y));
        const auto t = desktop::thumbnailOf(p, c.size);
        ASSERT_EQ(std::pair(t.width, t.height), std::pair(c.thumbWidth, c.thumbHeight)) << c.width << "@" << c.size;
        const int k = t.width / c.width;
        for (int y = 0; y < t.height; ++y)
            for (int x = 0; x < t.width; ++x) {
                const std::uint32_t got = t.pixels[std::size_t(y * t.width + x)];
                if (k >= 1) {
                    ASSERT_EQ(got, 0xFF000000u | p.pixels[std::size_t(y / k * c.width + x / k)]);
                } else if (2 * t.width == c.width) {  // two by two pixels, two white, two with no red
                    ASSERT_EQ(got >> 16 & 0xFF, 128u);
                }
            }
    }
}

// A file manager runs the thumbnailer on whatever carries a picture's name:
// a refusal names the file and the reason, and leaves no thumbnail.
TEST(DesktopThumbnail, RefusalsNameTheFileAndTheReason) {
    vtest::TempDir dir;
    const std::string out = dir.file("x.png");
    // The length of the file, its start filled up with zeros; -1: no file.
    const struct { const char* name; vtest::Bytes start; long long length; std::string reason; } cases[] = {
        {"a.Neo", {}, 0, "the file is empty"}, {"a.spu", {}, 100, "not a valid Spectrum 512 file"},
        {"a.pc1", {}, 100, "the file ends before the picture does"},
        {"a.pi1", {}, 100, "the file ends before the first row of the picture"},
        {"a.tn1", {}, 100, "not a valid Tiny low resolution file: its control bytes lie outside the file"},
        // The colour data of a smooshed Spectrum picture 6 megabytes in.
        {"a.sps", {0, 0, 0, 0, 0, 100}, 100,
         "not a valid Spectrum 512 smooshed file: its colour data lie outside the file"},
        {"a.neo", {}, 1 << 30, "the file is far longer than any Atari picture"},
        {"a.png", {}, 100, "not an Atari picture name"}, {"gone.neo", {}, -1, ""}};
    for (const auto& c : cases) {
        const std::string file = dir.file(c.name);
        if (c.length >= 0) {
            vtest::writeFile(file, c.start);
            vtest::fs::resize_file(file, std::uintmax_t(c.length));
        }
        const auto [status, err] = thumbnail({file, out});
        EXPECT_EQ(status, 1) << c.name;
        EXPECT_NE(err.find(file + ": " + c.reason), std::string::npos) << err;
    }
    EXPECT_EQ(thumbnail({"-s", "0", dir.file("a.pc1"), out}).first, 2) << "a size of 0";
    EXPECT_EQ(thumbnail({dir.file("a.pc1")}).first, 2) << "no output named";
    EXPECT_FALSE(vtest::fs::exists(out));
}

}  // namespace
