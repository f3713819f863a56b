// GIF output: every frame's pixels and palette as the decode and its colour
// cycles give them, delays whose running total stays true, a loop for ever,
// and a picture of more colours than a GIF holds refused by name.
#include <gif_lib.h>

#include "convert/colours.h"
#include "convert/convert.h"
#include "convert/gif.h"
#include "support.h"

using namespace velmoric;
namespace fs = std::filesystem;

namespace {

// A GIF as giflib reads it: each frame's colours (0xRRGGBB) and indices, its
// delay, and whether a Netscape block asks for a loop for ever.
struct ReadGif {
    std::vector<std::vector<std::uint32_t>> colours;
    std::vector<vtest::Bytes> indices;
    std::vector<int> delays;
    bool loops = false;
};

ReadGif readGif(const std::string& path) {
    ReadGif out;
    int error = 0;
    GifFileType* gif = DGifOpenFileName(path.c_str(), &error);
    if (!gif || DGifSlurp(gif) != GIF_OK) {
        ADD_FAILURE() << path << ": " << GifErrorString(gif ? gif->Error : error);
        return out;
    }
    for (int i = 0; i < gif->ImageCount; ++i) {
        const SavedImage& f = gif->SavedImages[i];
        const ColorMapObject* map = f.ImageDesc.ColorMap ? f.ImageDesc.ColorMap : gif->SColorMap;
        out.colours.emplace_back();
        for (int c = 0; c < map->ColorCount; ++c)
            out.colours.back().push_back(std::uint32_t(map->Colors[c].Red) << 16 | map->Colors[c].Green << 8 |
                                         map->Colors[c].Blue);
        out.indices.emplace_back(f.RasterBits, f.RasterBits + f.ImageDesc.Width * f.ImageDesc.Height);
        GraphicsControlBlock control{};
        DGifSavedExtensionToGCB(gif, i, &control);
        out.delays.push_back(control.DelayTime);
        for (int e = 0; e + 1 < f.ExtensionBlockCount; ++e) {
            const ExtensionBlock* b = f.ExtensionBlocks + e;
            out.loops = out.loops || (b->Function == APPLICATION_EXT_FUNC_CODE && b->ByteCount == 11 &&
                                      std::memcmp(b->Bytes, "NETSCAPE2.0", 11) == 0 && b[1].ByteCount == 3 &&
                                      b[1].Bytes[0] == 1 && b[1].Bytes[1] == 0 && b[1].Bytes[2] == 0);
        }
    }
    DGifCloseFile(gif, nullptr);
    return out;
}

std::vector<std::uint32_t> rgbOf(const cycles::Palette& p) {
    std::vector<std::uint32_t> out;
    for (const auto& c : p) out.push_back(std::uint32_t(c[2]) << 16 | std::uint32_t(c[1]) << 8 | c[0]);
    return out;
}

TEST(GifOutput, FramesArePaletteRotationsWithTheirDelaysAndStillsStayOneFrame) {
    const char* pictures[] = {"neo/LOD_AUTOBIG2.NEO", "neo/LOD_AUTOBIG3.NEO", "neo/LOD_FONT1_C.NEO",
                              "neo/LOD_FONT1_D.NEO",  "neo/LOD_FONTM1_4.NEO", "neo/LOD_RIPPED.NEO",
                              "pc1/ELITE_TITLE.PC1",  "pc1/LOGO.PC1",         "pc1/MAGICMTN.PC1",
                              "pi1/00471.PI1",        "neo/DIEGO.NEO",        "pc3/CLIPART.PC3",
                              "pi2/VALENTIN.PI2",     "mac/MARBLES.MAC",      "spu/APPLE.SPU"};
    if (!fs::exists(vtest::corpusDir())) GTEST_SKIP() << "no corpus";
    vtest::TempDir dir;
    for (const char* name : pictures) {
        const std::string source = (vtest::corpusDir() / name).string();
        StringConsole console;
        ASSERT_EQ(runConvert({"-q", "-f", "gif", "-o", dir.path().string(), source}, console), 0) << console.errText;
        FreshStaging staging;
        std::span<const std::uint8_t> bitmap;
        const FileDecode d = staging.decodeInPlace(source, bitmap, true);
        const auto want = indexedPicture(Picture::fromBitmapBytes({bitmap.begin(), bitmap.end()}));
        const ReadGif gif = readGif((dir.path() / (fs::path(name).filename().string() + ".gif")).string());
        ASSERT_TRUE(want && gif.colours.size() == d.frames.size()) << name;
        EXPECT_EQ(gif.loops, d.frames.size() > 1) << name;
        for (std::size_t i = 0; i < d.frames.size(); ++i) {
            const auto palette = d.frames.size() > 1 ? rgbOf(d.frames[i].palette) : want->palette;
            EXPECT_TRUE(std::equal(palette.begin(), palette.end(), gif.colours[i].begin())) << name << " frame " << i;
            EXPECT_EQ(gif.indices[i], want->indices) << name << " frame " << i;
        }
        if (d.frames.size() > 1) {
            EXPECT_EQ(gif.delays, cycles::delaysIn(d.frames, 100)) << name;
        }
    }
}

// In hundredths for a GIF and in milliseconds for the desktop's plugins.
TEST(GifOutput, DelaysKeepTheRunningTotalTrue) {
    const std::tuple<std::vector<int>, std::vector<int>, std::vector<int>> rows[] = {
        {{3, 3, 3}, {5, 5, 5}, {50, 50, 50}}, {{2, 2, 2, 2, 2, 2}, {3, 4, 3, 3, 4, 3}, {33, 34, 33, 33, 34, 33}},
        {{127, 127}, {212, 211}, {2117, 2116}}, {{1, 1, 1}, {2, 1, 2}, {17, 16, 17}}};
    for (const auto& [ticks, hundredths, ms] : rows) {
        std::vector<cycles::Frame> frames;
        for (int t : ticks) frames.push_back({{}, t});
        EXPECT_EQ(cycles::delaysIn(frames, 100), hundredths) << ticks.size() << " frames of " << ticks[0];
        EXPECT_EQ(cycles::delaysIn(frames, 1000), ms) << ticks.size() << " frames of " << ticks[0];
    }
}

TEST(GifOutput, PictureOfMoreThan256ColoursIsRefusedByNameAndLeavesNoFile) {
    const fs::path spectrum = vtest::corpusDir().parent_path() / "synthetic/spu_000.SPU";
    if (!fs::exists(spectrum)) GTEST_SKIP() << "no " << spectrum;
    vtest::TempDir dir;
    StringConsole console;
    EXPECT_EQ(runConvert({"-q", "-f", "gif", "-o", dir.path().string(), spectrum.string()}, console), 1);
    EXPECT_EQ(console.errText, spectrum.string() + ": the picture has more than 256 colours, more than a GIF can hold\n");
    EXPECT_TRUE(fs::is_empty(dir.path()));
}

}  // namespace
