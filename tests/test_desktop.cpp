// Atari pictures for the desktop's image libraries and thumbnails: the same
// pixels as the converter (medium resolution with its lines doubled), clean
// failures for broken files, thumbnails in proportion without smoothing, and
// the desktop's files in agreement with the table of formats.
#include <map>
#include <set>
#include <sstream>

#include "convert/convert.h"
#include "desktop/desktopfiles.h"
#include "desktop/desktopimage.h"
#include "desktop/thumbnail.h"
#include "options/association.h"
#include "platform/picture.h"
#include "platform/xdg_association.h"
#include "support.h"

using namespace velmoric;

namespace {

namespace fs = std::filesystem;

fs::path syntheticDir() { return vtest::corpusDir().parent_path() / "synthetic"; }

// Every picture file of the corpus and of the synthetic set.
std::vector<fs::path> sharedPictures() {
    std::vector<fs::path> out;
    for (const fs::path& root : {vtest::corpusDir(), syntheticDir()}) {
        std::error_code ec;
        for (auto it = fs::recursive_directory_iterator(root, ec); !ec && it != fs::recursive_directory_iterator();
             it.increment(ec))
            if (it->is_regular_file() && findFormat(extensionOf(it->path().filename().string())))
                out.push_back(it->path());
    }
    std::sort(out.begin(), out.end());
    return out;
}

desktop::DesktopPicture decodeBytes(const std::string& key, const vtest::Bytes& bytes) {
    const Format* f = desktop::formatForKey(key);
    EXPECT_NE(f, nullptr) << key;
    return f ? desktop::decodeForDesktop(*f, bytes, bytes.size()) : desktop::DesktopPicture{};
}

// The first file of the synthetic set with the extension, any case.
vtest::Bytes syntheticFile(const std::string& lower) {
    for (const fs::path& p : sharedPictures())
        if (p.parent_path() == syntheticDir() && desktop::formatForKey(extensionOf(p.filename().string())) ==
                                                     desktop::formatForKey(lower))
            return vtest::readFile(p.string());
    return {};
}

std::vector<std::string> fieldsOf(const std::string& list, char by) {
    std::vector<std::string> out;
    std::istringstream in(list);
    for (std::string item; std::getline(in, item, by);)
        if (!item.empty()) out.push_back(item);
    return out;
}

std::string entryValue(const std::string& text, const std::string& key) {
    for (const std::string& line : fieldsOf(text, '\n'))
        if (line.rfind(key + "=", 0) == 0) return line.substr(key.size() + 1);
    return {};
}

std::vector<std::string> tableColumn(std::string_view Format::*field) {
    std::vector<std::string> out;
    for (const Format& f : formatTable()) out.emplace_back(f.*field);
    return out;
}

// ---- Pictures --------------------------------------------------------------------

TEST(DesktopPicture, EverySharedFileHasTheConvertersPixelsWithMediumLinesDoubled) {
    const auto files = sharedPictures();
    if (files.empty()) GTEST_SKIP() << "no shared pictures";
    for (const fs::path& path : files) {
        const FileDecode converted = decodeFile(path.string());
        const vtest::Bytes bytes = vtest::readFile(path.string());
        const auto p = decodeBytes(extensionOf(path.filename().string()), bytes);
        ASSERT_TRUE(converted.ok) << path;
        ASSERT_TRUE(p.ok) << path << ": " << p.error;
        const Picture reference = Picture::fromBitmapBytes(converted.bitmap);
        const int repeat = converted.kind == 2 ? 2 : 1;
        ASSERT_EQ(p.width, reference.width()) << path;
        ASSERT_EQ(p.height, reference.height() * repeat) << path;
        const std::vector<std::uint32_t> rows = reference.toRgb();
        for (int y = 0; y < p.height; ++y)
            ASSERT_TRUE(std::equal(rows.begin() + (y / repeat) * p.width, rows.begin() + (y / repeat + 1) * p.width,
                                   p.pixels.begin() + y * p.width))
                << path << " row " << y;
    }
}

TEST(DesktopPicture, BrokenFilesFailWithAReason) {
    struct Case {
        std::string key, what;
        vtest::Bytes bytes;
    };
    std::vector<Case> cases;
    std::uint32_t seed = 1;
    for (const Format& f : formatTable()) {
        const std::string key(f.lower);
        cases.push_back({key, "empty", {}});
        for (int i = 0; i < 3; ++i) cases.push_back({key, "100 random bytes", vtest::randomBytes(100, seed++)});
        const vtest::Bytes whole = syntheticFile(key);
        if (whole.empty()) continue;
        // A packed picture cut anywhere runs out; a plain one cut within its header has no first row.
        const std::size_t cut = f.routine == "degas1" || f.routine == "degas2" || f.routine == "degas3" ? 60 : whole.size() / 2;
        cases.push_back({key, "cut at " + std::to_string(cut), vtest::Bytes(whole.begin(), whole.begin() + std::ptrdiff_t(cut))});
    }
    ASSERT_EQ(cases.size(), 5 * formatTable().size()) << "no synthetic picture to cut for some extension";
    for (const Case& c : cases) {
        const auto p = decodeBytes(c.key, c.bytes);
        EXPECT_FALSE(p.ok) << c.key << ", " << c.what;
        EXPECT_FALSE(p.error.empty()) << c.key << ", " << c.what;
        EXPECT_TRUE(p.pixels.empty()) << c.key << ", " << c.what;
    }
    EXPECT_EQ(decodeBytes("neo", {}).error, "the file is empty");
    EXPECT_EQ(decodeBytes("spu", vtest::Bytes(100)).error, "not a valid Spectrum 512 file");
    EXPECT_EQ(decodeBytes("pc1", vtest::Bytes(100)).error, "the file ends before the picture does");
    EXPECT_EQ(decodeBytes("pi1", vtest::Bytes(100)).error, "the file ends before the first row of the picture");
    EXPECT_EQ(decodeBytes("tn1", vtest::Bytes(100)).error, "not a valid Tiny low resolution file: its control bytes lie outside the file");
    vtest::Bytes farPalettes(100);
    farPalettes[5] = 100;  // 12 + 65536 * 100 bytes in
    EXPECT_EQ(decodeBytes("sps", farPalettes).error, "not a valid Spectrum 512 smooshed file: its colour data lie outside the file");
}

TEST(DesktopPicture, APlainPictureCutAfterItsFirstRowShowsWhatItHas) {
    const vtest::Bytes whole = syntheticFile("pi2");
    if (whole.empty()) GTEST_SKIP() << "no synthetic pictures";
    const auto full = decodeBytes("pi2", whole);
    const vtest::Bytes cut(whole.begin(), whole.begin() + 34 + 160 * 20);  // header and 20 rows
    const auto shown = decodeBytes("pi2", cut);
    ASSERT_TRUE(shown.ok) << shown.error;
    EXPECT_EQ(shown.height, 400);
    EXPECT_TRUE(std::equal(full.pixels.begin(), full.pixels.begin() + 40 * 640, shown.pixels.begin()));
}

TEST(DesktopPicture, KeysCountInAnyCaseButWhole) {
    EXPECT_EQ(desktop::formatForKey("neo"), findFormat("neo"));
    EXPECT_EQ(desktop::formatForKey("Neo"), findFormat("neo"));
    EXPECT_EQ(desktop::formatForKey("SPc"), findFormat("spc"));
    for (const char* key : {"", "ne", "neoo", "png", "n\xC3\xA9o"}) EXPECT_EQ(desktop::formatForKey(key), nullptr) << key;
}

TEST(DesktopPicture, AStreamKeepsTheFirstBytesAndCountsTheRest) {
    desktop::SourceBytes source;
    const vtest::Bytes piece = vtest::randomBytes(40000, 7);
    for (int i = 0; i < 3; ++i) source.append(piece);
    source.append({});
    EXPECT_EQ(source.length(), 120000u);
    ASSERT_EQ(source.head().size(), kSourceLimit);
    EXPECT_TRUE(std::equal(piece.begin(), piece.end(), source.head().begin()));
    EXPECT_TRUE(std::equal(source.head().begin() + 40000, source.head().end(), piece.begin()));
}

// ---- Thumbnails ------------------------------------------------------------------

TEST(DesktopThumbnail, KeepsProportionsAndEnlargesInWholeBlocks) {
    struct Case {
        int width, height, size, thumbWidth, thumbHeight;
    };
    const Case cases[] = {
        {320, 200, 128, 128, 80},  {320, 200, 256, 256, 160}, {640, 400, 256, 256, 160}, {576, 720, 256, 205, 256},
        {320, 200, 512, 320, 200}, {320, 200, 1024, 960, 600}, {640, 400, 1280, 1280, 800}, {576, 720, 1024, 576, 720},
    };
    for (const Case& c : cases) {
        desktop::DesktopPicture p;
        p.ok = true, p.width = c.width, p.height = c.height;
        for (int i = 0; i < c.width * c.height; ++i) p.pixels.push_back(std::uint32_t(i * 2654435761u) & 0xFFFFFF);
        const auto t = desktop::thumbnailOf(p, c.size);
        EXPECT_EQ(t.width, c.thumbWidth) << c.width << "x" << c.height << " at " << c.size;
        EXPECT_EQ(t.height, c.thumbHeight) << c.width << "x" << c.height << " at " << c.size;
        ASSERT_EQ(t.pixels.size(), std::size_t(t.width) * std::size_t(t.height));
        if (t.width < c.width) continue;
        const int k = t.width / c.width;  // enlarged: every pixel a k by k block of its own colour
        for (int y = 0; y < t.height; ++y)
            for (int x = 0; x < t.width; ++x)
                ASSERT_EQ(t.pixels[std::size_t(y * t.width + x)], 0xFF000000u | p.pixels[std::size_t(y / k * c.width + x / k)]);
    }
}

TEST(DesktopThumbnail, ShrinkingAveragesWhatAPixelCovers) {
    desktop::DesktopPicture p;
    p.ok = true, p.width = 640, p.height = 400;
    for (int y = 0; y < 400; ++y)
        for (int x = 0; x < 640; ++x) p.pixels.push_back(((x + y) & 1) ? 0xFFFFFF : 0x000000);
    const auto t = desktop::thumbnailOf(p, 320);
    ASSERT_EQ(t.width, 320);
    for (std::uint32_t c : t.pixels) ASSERT_EQ(c, 0xFF808080u);
}

TEST(DesktopThumbnail, InputsArePathsOrLocalFileUris) {
    const std::pair<std::string, std::string> cases[] = {
        {"/p/a b.PI1", "/p/a b.PI1"},
        {"file:///p/a%20b.PI1", "/p/a b.PI1"},
        {"file://localhost/p/%C3%A9.neo", "/p/\xC3\xA9.neo"},
        {"file:///p/100%.neo", "/p/100%.neo"},
        {"file://host/p/a.neo", ""},
        {"sftp://host/p/a.neo", ""},
    };
    for (const auto& [input, path] : cases) EXPECT_EQ(desktop::localPathOf(input), path) << input;
}

TEST(DesktopThumbnail, TheProgramWritesAPngOrNamesTheFileAndTheReason) {
    vtest::TempDir dir;
    const vtest::Bytes picture = syntheticFile("pi2");
    if (picture.empty()) GTEST_SKIP() << "no synthetic pictures";
    vtest::writeFile(dir.file("m.pi2"), picture);
    vtest::writeFile(dir.file("broken.pc1"), vtest::Bytes(50));
    vtest::writeFile(dir.file("other.png"), picture);
    struct Case {
        std::vector<std::string> args;
        int status;
        std::string message;
    };
    const Case cases[] = {
        {{"-s", "128", dir.file("m.pi2"), dir.file("m.png")}, 0, ""},
        {{"-s", "0", dir.file("m.pi2"), dir.file("x.png")}, 2, "bad size '0'"},
        {{dir.file("m.pi2")}, 2, "usage:"},
        {{dir.file("broken.pc1"), dir.file("x.png")}, 1, dir.file("broken.pc1") + ": the file ends before the picture does"},
        {{dir.file("other.png"), dir.file("x.png")}, 1, "not an Atari picture name"},
        {{dir.file("gone.neo"), dir.file("x.png")}, 1, dir.file("gone.neo")},
    };
    for (const Case& c : cases) {
        std::vector<std::string> owned = {"velmoric-thumbnailer"};
        owned.insert(owned.end(), c.args.begin(), c.args.end());
        std::vector<char*> argv;
        for (auto& a : owned) argv.push_back(a.data());
        std::ostringstream err;
        EXPECT_EQ(desktop::runThumbnailer(int(argv.size()), argv.data(), err), c.status) << owned[1];
        EXPECT_NE(err.str().find(c.message), std::string::npos) << err.str();
    }
    const vtest::Bytes png = vtest::readFile(dir.file("m.png"));
    ASSERT_GT(png.size(), 24u);
    auto be32 = [&](std::size_t at) { return png[at] << 24 | png[at + 1] << 16 | png[at + 2] << 8 | png[at + 3]; };
    EXPECT_EQ(be32(16), 128);  // 640 by 400 in 128: 128 by 80
    EXPECT_EQ(be32(20), 80);
    EXPECT_FALSE(fs::exists(dir.file("x.png")));
}

// ---- The desktop's files -----------------------------------------------------------

TEST(DesktopFiles, PluginMetadataAndThumbnailerNameEveryRow) {
    const std::string json = desktop::qtPluginMetadata();
    auto jsonList = [&](const std::string& key) {
        const auto open = json.find('[', json.find("\"" + key + "\"")), close = json.find(']', open);
        std::vector<std::string> out;
        for (std::string item : fieldsOf(json.substr(open + 1, close - open - 1), ','))
            out.push_back(item.substr(item.find('"') + 1, item.rfind('"') - item.find('"') - 1));
        return out;
    };
    EXPECT_EQ(jsonList("Keys"), tableColumn(&Format::lower));
    EXPECT_EQ(jsonList("MimeTypes"), tableColumn(&Format::mimeType));

    const std::string entry = desktop::thumbnailerEntry();
    EXPECT_EQ(fieldsOf(entry, '\n').front(), "[Thumbnailer Entry]");
    EXPECT_EQ(entryValue(entry, "Exec"), "velmoric-thumbnailer -s %s %i %o");
    EXPECT_EQ(entryValue(entry, "TryExec"), "velmoric-thumbnailer");
    EXPECT_EQ(fieldsOf(entryValue(entry, "MimeType"), ';'), tableColumn(&Format::mimeType));
}

TEST(DesktopFiles, TheFirstRunWritesWhatTheInstallHoldsButItsOwnExec) {
    const Association firstRun = buildAssociation("/home/me/velmoric");
    EXPECT_EQ(xdg::mimePackageText(firstRun), desktop::installedMimePackage());
    const std::string installed = desktop::installedDesktopEntry(), written = xdg::desktopEntryText(firstRun);
    EXPECT_EQ(entryValue(installed, "Exec"), "velmoric %f");
    EXPECT_EQ(entryValue(written, "Exec"), "/home/me/velmoric/velmoric %f");
    std::string rest = installed;
    rest.replace(rest.find("Exec=velmoric %f"), 16, "Exec=/home/me/velmoric/velmoric %f");
    EXPECT_EQ(rest, written);
    EXPECT_EQ(entryValue(installed, "Icon"), xdg::kApplicationId);
    const auto types = tableColumn(&Format::mimeType), listed = fieldsOf(entryValue(installed, "MimeType"), ';');
    EXPECT_EQ(std::multiset<std::string>(listed.begin(), listed.end()), std::multiset<std::string>(types.begin(), types.end()));
}

}  // namespace
