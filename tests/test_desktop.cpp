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

desktop::DesktopPicture decodeBytes(const char* key, const vtest::Bytes& bytes) {
    return desktop::decodeForDesktop(*desktop::formatForKey(key), bytes, bytes.size());
}

TEST(DesktopPicture, BrokenFilesGiveTheirReason) {
    vtest::Bytes farColours(100);
    farColours[5] = 100;  // the colour data of a smooshed Spectrum picture 6 megabytes in
    const struct {
        const char* key;
        vtest::Bytes bytes;
        std::string reason;
    } cases[] = {
        {"NEO", {}, "the file is empty"},
        {"spu", vtest::Bytes(100), "not a valid Spectrum 512 file"},
        {"pc1", vtest::Bytes(100), "the file ends before the picture does"},
        {"pi1", vtest::Bytes(100), "the file ends before the first row of the picture"},
        {"tn1", vtest::Bytes(100), "not a valid Tiny low resolution file: its control bytes lie outside the file"},
        {"sps", farColours, "not a valid Spectrum 512 smooshed file: its colour data lie outside the file"},
    };
    for (const auto& c : cases) EXPECT_EQ(decodeBytes(c.key, c.bytes).error, c.reason) << c.key;
    EXPECT_EQ(desktop::decodeForDesktop(*findFormat("neo"), vtest::Bytes(200), 1u << 30).error,
              "the file is far longer than any Atari picture");
    EXPECT_EQ(desktop::formatForKey("Neo"), findFormat("neo"));
    EXPECT_EQ(desktop::formatForKey("neoo"), nullptr);
}

TEST(DesktopPicture, APlainPictureCutAfterItsFirstRowsShowsThemLinesDoubled) {
    const vtest::Bytes whole = vtest::readFile((vtest::corpusDir() / "../synthetic/pi2_000.PI2").string());
    if (whole.empty()) GTEST_SKIP() << "no synthetic pictures";
    const auto full = decodeBytes("pi2", whole);
    const auto cut = decodeBytes("pi2", vtest::Bytes(whole.begin(), whole.begin() + 34 + 160 * 20));  // 20 rows
    ASSERT_TRUE(full.ok && cut.ok) << cut.error;
    EXPECT_EQ(cut.height, 400);
    // The whole picture's doubled lines are checked against the converter by the installed plugins.
    EXPECT_TRUE(std::equal(full.pixels.begin(), full.pixels.begin() + 40 * 640, cut.pixels.begin()));
}

TEST(DesktopThumbnail, KeepsProportionsEnlargesInWholeBlocksAndShrinksByTheMean) {
    const struct {
        int width, height, size, thumbWidth, thumbHeight;
    } cases[] = {
        {320, 200, 128, 128, 80},  {640, 400, 256, 256, 160}, {576, 720, 256, 205, 256},  {320, 200, 512, 320, 200},
        {320, 200, 1024, 960, 600}, {640, 400, 320, 320, 200}, {576, 720, 1024, 576, 720},
    };
    for (const auto& c : cases) {
        desktop::DesktopPicture p;
        p.width = c.width, p.height = c.height;
        for (int y = 0; y < c.height; ++y)  // a chequer board of single pixels
            for (int x = 0; x < c.width; ++x) p.pixels.push_back((x + y) % 2 ? 0xFFFFFF : std::uint32_t(x * 7 + y));
        const auto t = desktop::thumbnailOf(p, c.size);
        ASSERT_EQ(t.width, c.thumbWidth) << c.width << " at " << c.size;
        ASSERT_EQ(t.height, c.thumbHeight) << c.width << " at " << c.size;
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

TEST(DesktopThumbnail, TheProgramNamesTheFileAndTheReason) {
    vtest::TempDir dir;
    const std::string broken = dir.file("broken.pc1"), other = dir.file("other.png"), out = dir.file("x.png");
    vtest::writeFile(broken, vtest::Bytes(50));
    const struct {
        std::vector<std::string> args;
        int status;
        std::string message;
    } cases[] = {  // the program's name first, which it does not read
        {{"", "-s", "0", broken, out}, 2, "bad size '0'"},
        {{"", broken}, 2, "usage:"},
        {{"", broken, out}, 1, broken + ": the file ends before the picture does"},
        {{"", other, out}, 1, other + ": not an Atari picture name"},
        {{"", dir.file("gone.neo"), out}, 1, dir.file("gone.neo") + ": "},
    };
    for (auto c : cases) {
        std::vector<char*> argv;
        for (auto& a : c.args) argv.push_back(a.data());
        std::ostringstream err;
        EXPECT_EQ(desktop::runThumbnailer(int(argv.size()), argv.data(), err), c.status) << c.args[1];
        EXPECT_NE(err.str().find(c.message), std::string::npos) << err.str();
    }
    EXPECT_FALSE(vtest::fs::exists(out));
}

}  // namespace
