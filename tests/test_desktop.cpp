// Atari pictures for the desktop, in what the installed plugins' checks
// (tests/desktop) cannot show: why a file is refused, the line of a plain
// picture that is cut short, thumbnails' sizes and blocks, the thumbnailer's
// errors, and the first run writing what the install holds.
#include <sstream>

#include "desktop/desktopfiles.h"
#include "desktop/desktopimage.h"
#include "desktop/thumbnail.h"
#include "options/association.h"
#include "platform/xdg_association.h"
#include "support.h"

using namespace velmoric;

namespace {

desktop::DesktopPicture decodeBytes(const char* key, const vtest::Bytes& bytes) {
    return desktop::decodeForDesktop(*desktop::formatForKey(key), bytes, bytes.size());
}

vtest::Bytes syntheticPi2() { return vtest::readFile((vtest::corpusDir() / "../synthetic/pi2_000.PI2").string()); }

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
    for (const auto& c : cases) {
        const auto p = decodeBytes(c.key, c.bytes);
        EXPECT_FALSE(p.ok) << c.key;
        EXPECT_EQ(p.error, c.reason) << c.key;
    }
    EXPECT_EQ(desktop::decodeForDesktop(*findFormat("neo"), vtest::Bytes(200), 1u << 30).error,
              "the file is far longer than any Atari picture");
    EXPECT_EQ(desktop::formatForKey("Neo"), findFormat("neo"));
    EXPECT_EQ(desktop::formatForKey("neoo"), nullptr);
}

TEST(DesktopPicture, APlainPictureCutAfterItsFirstRowsShowsThemLinesDoubled) {
    const vtest::Bytes whole = syntheticPi2();
    if (whole.empty()) GTEST_SKIP() << "no synthetic pictures";
    const auto full = decodeBytes("pi2", whole);
    const auto cut = decodeBytes("pi2", vtest::Bytes(whole.begin(), whole.begin() + 34 + 160 * 20));  // 20 rows
    ASSERT_TRUE(full.ok && cut.ok) << cut.error;
    EXPECT_EQ(cut.height, 400);
    EXPECT_TRUE(std::equal(full.pixels.begin(), full.pixels.begin() + 40 * 640, cut.pixels.begin()));
    for (int y = 0; y < 400; y += 2)
        ASSERT_TRUE(std::equal(full.pixels.begin() + y * 640, full.pixels.begin() + (y + 1) * 640,
                               full.pixels.begin() + (y + 1) * 640)) << y;
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
    vtest::writeFile(dir.file("broken.pc1"), vtest::Bytes(50));
    vtest::writeFile(dir.file("other.png"), vtest::Bytes(50));
    const struct {
        std::vector<std::string> args;
        int status;
        std::string message;
    } cases[] = {
        {{"-s", "0", dir.file("broken.pc1"), dir.file("x.png")}, 2, "bad size '0'"},
        {{dir.file("broken.pc1")}, 2, "usage:"},
        {{dir.file("broken.pc1"), dir.file("x.png")}, 1, dir.file("broken.pc1") + ": the file ends before the picture does"},
        {{dir.file("other.png"), dir.file("x.png")}, 1, dir.file("other.png") + ": not an Atari picture name"},
        {{dir.file("gone.neo"), dir.file("x.png")}, 1, dir.file("gone.neo") + ": "},
    };
    for (const auto& c : cases) {
        std::vector<std::string> owned = {"velmoric-thumbnailer"};
        owned.insert(owned.end(), c.args.begin(), c.args.end());
        std::vector<char*> argv;
        for (auto& a : owned) argv.push_back(a.data());
        std::ostringstream err;
        EXPECT_EQ(desktop::runThumbnailer(int(argv.size()), argv.data(), err), c.status) << owned[1];
        EXPECT_NE(err.str().find(c.message), std::string::npos) << err.str();
    }
    EXPECT_FALSE(vtest::fs::exists(dir.file("x.png")));
}

TEST(DesktopFiles, TheFirstRunWritesWhatTheInstallHoldsButItsOwnExec) {
    const Association firstRun = buildAssociation("/home/me/velmoric");
    EXPECT_EQ(xdg::mimePackageText(firstRun), desktop::installedMimePackage());
    std::string installed = desktop::installedDesktopEntry();
    const auto exec = installed.find("\nExec=velmoric %f\n");
    ASSERT_NE(exec, std::string::npos);
    EXPECT_EQ(installed.replace(exec, 18, "\nExec=/home/me/velmoric/velmoric %f\n"), xdg::desktopEntryText(firstRun));
}

}  // namespace
