// The rules of the options dialog on a model of its controls that starts in
// the dialog's created state and raises the change events as the controls
// do: what opening shows and fires, what closing stores, and the preview's
// arithmetic.
#include <algorithm>
#include <cmath>

#include "options/optionsdialog.h"
#include "platform/headless.h"
#include "support.h"

using namespace velmoric;

namespace {

struct ModelForm4 : OptionsControls {
    OptionsDialog* rules = nullptr;
    std::vector<std::string> events;
    int checks[5] = {0, 1, 0, 0, 0};  // Check1 to Check4; Check1 starts checked
    int option1 = 1, option2 = 1, scroll = 100;
    std::string label3 = "100";
    int sheetW = 1368, sheetH = 1935;
    PreviewPlace preview{120, 600, 975, 615};
    Picture picture;
    bool closed = false;

    int checkValue(int n) override { return checks[n]; }
    void setCheckValue(int n, int value) override { checks[n] = value; }
    bool option1Selected(int i) override { return option1 == i; }
    void selectOption1(int i) override { option1 = i; }
    bool option2Selected(int i) override { return option2 == i; }
    void selectOption2(int i) override {
        if (option2 == i) return;
        option2 = i;
        events.push_back("Option2_Click " + std::to_string(i));
        rules->Option2_Click(i);
    }
    int scrollValue() override { return scroll; }
    void setScrollValue(int value) override {
        value = std::clamp(value, 5, 100);
        if (value == scroll) return;
        scroll = value;
        events.push_back("HScroll1_Change");
        rules->HScroll1_Change();
    }
    void setLabel3(const std::string& text) override { label3 = text; }
    int sheetWidth() override { return sheetW; }
    int sheetHeight() override { return sheetH; }
    void setSheetSize(int w, int h) override { sheetW = w, sheetH = h; }
    void setPreviewTop(int top) override { preview.top = top; }
    void setPreviewLeft(int left) override { preview.left = left; }
    void setPreviewSize(int w, int h) override { preview.width = w, preview.height = h; }
    void setPreviewPicture(const Picture& p) override { picture = p; }
    void unload() override {
        closed = true;
        rules->Form_Unload();
    }
};

struct OptionsDialogTest : ::testing::Test {
    HeadlessPlatform ui;
    Options options;  // what the viewer holds
    ModelForm4 form;
    OptionsDialog rules{ui, options, form};

    void SetUp() override { form.rules = &rules; }
    void store(const std::string& key, const std::string& value) { ui.settings["velmoric/options/" + key] = value; }
    std::string stored(const std::string& key) { return ui.settings["velmoric/options/" + key]; }
};

TEST_F(OptionsDialogTest, EmptyStoreShowsTheDefaultsWithoutAnyEvent) {
    rules.Form_Load();
    EXPECT_EQ(std::vector<int>(form.checks + 1, form.checks + 5), (std::vector<int>{0, 0, 1, 0}));
    EXPECT_EQ(form.option1, 1) << "2 Seconds";
    EXPECT_EQ(form.option2, 1) << "Portrait";
    EXPECT_EQ(form.scroll, 100);
    EXPECT_TRUE(form.events.empty()) << "the created state already shows the defaults";
    EXPECT_EQ(form.sheetW, 1325);
    EXPECT_EQ(form.sheetH, 1875);
    EXPECT_EQ(form.preview, (PreviewPlace{0, 523, 1325, 828}));
    EXPECT_TRUE(ui.settingsWritten.empty()) << "nothing is written before the dialog closes";
}

TEST_F(OptionsDialogTest, StoredValuesSelectControlsAndFireOnlyOnChange) {
    struct Case {
        std::vector<std::pair<std::string, std::string>> stored;
        int option1, option2, scroll;
        std::string label3;
        std::vector<std::string> events;
        int orientation, printscale;
    };
    const Case cases[] = {
        {{{"delay", "0"}}, 0, 1, 100, "100", {}, 1, 100},
        {{{"delay", "5"}}, 2, 1, 100, "100", {}, 1, 100},
        {{{"delay", "10"}}, 3, 1, 100, "100", {}, 1, 100},
        {{{"delay", "15"}}, 4, 1, 100, "100", {}, 1, 100},
        {{{"delay", "7"}}, 1, 1, 100, "100", {}, 1, 100},
        {{{"orientation", "0"}}, 1, 0, 100, "100", {"Option2_Click 0"}, 0, 100},
        {{{"printscale", "5"}}, 1, 1, 5, "5", {"HScroll1_Change"}, 1, 5},
        {{{"orientation", "0"}, {"printscale", "40"}}, 1, 0, 40, "40", {"Option2_Click 0", "HScroll1_Change"}, 0, 40},
        // Values only an outside hand can store become what the controls show.
        {{{"orientation", "7"}, {"printscale", "300"}}, 1, 1, 100, "100", {}, 1, 100},
        {{{"printscale", "-4"}}, 1, 1, 5, "5", {"HScroll1_Change"}, 1, 5},
    };
    for (const Case& c : cases) {
        ui.settings.clear();
        form = ModelForm4{};
        form.rules = &rules;
        for (const auto& [key, value] : c.stored) store(key, value);
        rules.Form_Load();
        const std::string what = c.stored.front().first + "=" + c.stored.front().second;
        EXPECT_EQ(form.option1, c.option1) << what;
        EXPECT_EQ(form.option2, c.option2) << what;
        EXPECT_EQ(form.scroll, c.scroll) << what;
        EXPECT_EQ(form.label3, c.label3) << what;
        EXPECT_EQ(form.events, c.events) << what;
        EXPECT_EQ(options.orientation, c.orientation) << what;
        EXPECT_EQ(options.printscale, c.printscale) << what;
        EXPECT_EQ(form.sheetH, c.orientation == 1 ? 1875 : 936) << what;
        EXPECT_EQ(form.preview, previewPlace(c.printscale, 1325, form.sheetH)) << what;
    }
}

TEST_F(OptionsDialogTest, ChecksShowExactlyOneAsOn) {
    for (const auto& [value, shown] : {std::pair{"1", 1}, {"0", 0}, {"2", 0}, {"-1", 0}}) {
        for (const char* key : {"save", "size", "repeat", "single"}) store(key, value);
        rules.Form_Load();
        EXPECT_EQ(std::vector<int>(form.checks + 1, form.checks + 5), std::vector<int>(4, shown)) << value;
    }
}

TEST_F(OptionsDialogTest, ClosingStoresWhatTheControlsShowInTheStoresOrder) {
    store("delay", "7");
    store("size", "1");
    rules.Form_Load();
    EXPECT_EQ(options.size, 1);
    const std::int16_t slideshowFlag = options.slideshowFlag = -1;
    // While open, orientation and scale follow the controls; the rest waits.
    form.checks[2] = 0;
    form.selectOption2(0);
    form.setScrollValue(35);
    EXPECT_EQ(options.orientation, 0);
    EXPECT_EQ(options.printscale, 35);
    EXPECT_EQ(form.label3, "35");
    EXPECT_EQ(options.size, 1);
    form.option1 = 4;
    form.checks[1] = form.checks[4] = 1;
    form.checks[3] = 0;
    rules.Command1_Click();
    EXPECT_TRUE(form.closed);
    EXPECT_EQ(ui.settingsWritten,
              (std::vector<std::string>{"delay", "save", "size", "repeat", "orientation", "printscale", "single"}));
    const std::pair<const char*, const char*> expected[] = {{"delay", "15"}, {"save", "1"},        {"size", "0"},
                                                            {"repeat", "0"}, {"orientation", "0"}, {"printscale", "35"},
                                                            {"single", "1"}};
    for (const auto& [key, text] : expected) EXPECT_EQ(stored(key), text) << key;
    EXPECT_EQ(options.delay, 15);
    EXPECT_EQ(options.size, 0);
    EXPECT_EQ(options.slideshowFlag, slideshowFlag) << "not an option";

    // A delay of 7 read at opening is written back as 2.
    store("delay", "7");
    rules.Form_Load();
    form.unload();
    EXPECT_EQ(stored("delay"), "2");
}

TEST_F(OptionsDialogTest, PreviewSharesThePictureOnShow) {
    const auto staging = vtest::freshStaging();
    ui.image = Picture::fromBitmapBytes(vtest::bytesOf(vtest::decodeAs(*staging, vtest::Bytes(32034, 0), "PI1").bitmap));
    rules.Form_Load();
    ASSERT_FALSE(form.picture.empty());
    EXPECT_EQ(&form.picture.bytes(), &ui.image.bytes()) << "the same picture object, not a copy";
}

TEST(OptionsPreview, AgreesWithFloatArithmeticForEveryScaleAndOrientation) {
    for (int height : {kPortraitSheetHeight, kLandscapeSheetHeight})
        for (int scale = 5; scale <= 100; ++scale) {
            const float w = 1325.0f, h = float(height);
            const float iw = float(scale) * w / 100.0f;
            const float ih = 0.625f * iw;
            const PreviewPlace expected{int(std::nearbyint((w - iw) / 2.0f)), int(std::nearbyint((h - ih) / 2.0f)),
                                        int(std::nearbyint(iw)), int(std::nearbyint(ih))};
            EXPECT_EQ(previewPlace(scale, 1325, height), expected) << scale << " on " << height;
        }
    EXPECT_EQ(previewPlace(100, 1325, 1875), (PreviewPlace{0, 523, 1325, 828}));
    EXPECT_EQ(previewPlace(5, 1325, 936), (PreviewPlace{629, 447, 66, 41}));
}

TEST(OptionsPreview, HalvesRoundToEven) {
    for (const auto& [x, whole] : {std::pair{0.5f, 0}, {1.5f, 2}, {2.5f, 2}, {662.5f, 662}, {-0.5f, 0}, {-1.5f, -2},
                                   {629.375f, 629}, {523.25f, 523}, {0.75f, 1}})
        EXPECT_EQ(wholeTwips(x), whole) << x;
}

}  // namespace
