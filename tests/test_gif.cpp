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

struct GifFile {
    GifFileType* file = nullptr;
    explicit GifFile(const std::string& path) {
        int error = 0;
        file = DGifOpenFileName(path.c_str(), &error);
        if (file && DGifSlurp(file) != GIF_OK) ADD_FAILURE() << path << ": " << GifErrorString(file->Error);
    }
    ~GifFile() {
        if (file) DGifCloseFile(file, nullptr);
    }
    const SavedImage& frame(int i) const { return file->SavedImages[i]; }
    int delay(int i) const {
        GraphicsControlBlock control{};
        DGifSavedExtensionToGCB(file, i, &control);
        return control.DelayTime;
    }
    bool loopsForever() const {
        for (int i = 0; i < file->ImageCount; ++i)
            for (int e = 0; e + 1 < file->SavedImages[i].ExtensionBlockCount; ++e) {
                const ExtensionBlock* b = file->SavedImages[i].ExtensionBlocks + e;
                if (b->Function == APPLICATION_EXT_FUNC_CODE && b->ByteCount == 11 &&
                    std::string(reinterpret_cast<char*>(b->Bytes), 11) == "NETSCAPE2.0")
                    return b[1].ByteCount == 3 && b[1].Bytes[0] == 1 && b[1].Bytes[1] == 0 && b[1].Bytes[2] == 0;
            }
        return false;
    }
};

std::uint32_t rgb(const GifColorType& c) { return std::uint32_t(c.Red) << 16 | std::uint32_t(c.Green) << 8 | c.Blue; }

// Frame i of the GIF shows exactly the decoded pixels under `palette`.
void expectFrame(const GifFile& gif, int i, const IndexedPicture& want, const std::vector<std::uint32_t>& palette,
                 const std::string& what) {
    const SavedImage& f = gif.frame(i);
    const ColorMapObject* map = f.ImageDesc.ColorMap ? f.ImageDesc.ColorMap : gif.file->SColorMap;
    ASSERT_NE(map, nullptr) << what;
    for (std::size_t c = 0; c < palette.size(); ++c) EXPECT_EQ(rgb(map->Colors[c]), palette[c]) << what << " colour " << c;
    const std::size_t pixels = want.indices.size();
    ASSERT_EQ(std::size_t(f.ImageDesc.Width) * std::size_t(f.ImageDesc.Height), pixels) << what;
    EXPECT_TRUE(std::equal(want.indices.begin(), want.indices.end(), f.RasterBits)) << what << " frame " << i;
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
                              "pi1/00471.PI1",        "neo/DIEGO.NEO",        "pc3/CLIPART.PC3",     "pi2/VALENTIN.PI2",
                              "mac/MARBLES.MAC",      "spu/APPLE.SPU"};
    if (!fs::exists(vtest::corpusDir())) GTEST_SKIP() << "no corpus";
    vtest::TempDir dir;
    for (const char* name : pictures) {
        const std::string source = (vtest::corpusDir() / name).string();
        if (!fs::exists(source)) {
            ADD_FAILURE() << "no " << source;
            continue;
        }
        StringConsole console;
        ASSERT_EQ(runConvert({"-q", "-f", "gif", "-o", dir.path().string(), source}, console), 0) << console.errText;
        FreshStaging staging;
        std::span<const std::uint8_t> bitmap;
        const FileDecode d = staging.decodeInPlace(source, bitmap, true);
        const Picture picture = Picture::fromBitmapBytes({bitmap.begin(), bitmap.end()});
        const auto indexed = indexedPicture(picture);
        ASSERT_TRUE(indexed) << name;
        const GifFile gif((dir.path() / (fs::path(name).filename().string() + ".gif")).string());
        ASSERT_NE(gif.file, nullptr) << name;
        ASSERT_EQ(std::size_t(gif.file->ImageCount), d.frames.size()) << name;
        if (d.frames.size() == 1) {
            expectFrame(gif, 0, *indexed, indexed->palette, name);
            EXPECT_FALSE(gif.loopsForever()) << name;
            continue;
        }
        EXPECT_TRUE(gif.loopsForever()) << name;
        const std::vector<int> delays = gifDelays(d.frames);
        long long hundredths = 0, ticks = 0;
        for (int i = 0; i < gif.file->ImageCount; ++i) {
            expectFrame(gif, i, *indexed, rgbOf(d.frames[std::size_t(i)].palette), name);
            EXPECT_EQ(gif.delay(i), delays[std::size_t(i)]) << name << " frame " << i;
            hundredths += gif.delay(i);
            ticks += d.frames[std::size_t(i)].ticks;
        }
        EXPECT_EQ(hundredths, (ticks * 100 + 30) / 60) << name;
    }
}

TEST(GifOutput, DelaysKeepTheRunningTotalTrue) {
    struct Row {
        std::vector<int> ticks;
        std::vector<int> hundredths;
    };
    const Row rows[] = {
        {{3, 3, 3}, {5, 5, 5}},
        {{2, 2, 2, 2, 2, 2}, {3, 4, 3, 3, 4, 3}},
        {{127, 127}, {212, 211}},
        {{1, 1, 1}, {2, 1, 2}},
    };
    for (const Row& r : rows) {
        std::vector<cycles::Frame> frames;
        for (int t : r.ticks) frames.push_back({{}, t});
        EXPECT_EQ(gifDelays(frames), r.hundredths) << r.ticks.size() << " frames of " << r.ticks[0];
    }
}

TEST(GifOutput, PictureOfMoreThan256ColoursIsRefusedByNameAndLeavesNoFile) {
    const fs::path spectrum = vtest::corpusDir().parent_path() / "synthetic/spu_000.SPU";
    if (!fs::exists(spectrum)) GTEST_SKIP() << "no " << spectrum;
    vtest::TempDir dir;
    StringConsole console;
    EXPECT_EQ(runConvert({"-q", "-f", "gif", "-o", dir.path().string(), spectrum.string()}, console), 1);
    EXPECT_EQ(console.errText,
              spectrum.string() + ": the picture has more than 256 colours, more than a GIF can hold\n");
    EXPECT_TRUE(fs::is_empty(dir.path()));
}

}  // namespace
