// The sizing of window and picture by kind, mode and window state, measured
// on the real widgets.
#include "window_fixture.h"

using namespace vqt;

namespace {

const struct { int kind, width, height; } kKinds[] = {{1, 320, 200}, {2, 640, 200}, {3, 640, 400}, {4, 576, 720}};

// Native mode gives the native width and height; the platform's client
// measures are those of the widgets just laid out. Free mode's area at the
// client width times each kind's ratio is the core's arithmetic
// (test_window_layout); the widgets follow it in the tests below.
TEST_F(WindowTest, EachKindTakesItsNativeSize) {
    loadAndShow();
    for (const auto& k : kKinds) {
        SCOPED_TRACE("kind " + std::to_string(k.kind));
        layOut(k.kind, 1);
        EXPECT_EQ(platform->clientWidth(), k.width);
        EXPECT_EQ(form->centralWidget()->size(), QSize(k.width, platform->clientHeight()));
        EXPECT_EQ(imageSize(), QSize(k.width, k.height));
        EXPECT_EQ(areaHeight(), k.height);
        EXPECT_EQ(form->label1()->width(), k.width);
    }
}

TEST_F(WindowTest, FreeModeKeepsTheOuterWidthAtLeast3600Twips) {
    loadAndShow();
    for (int twips : {3000, 3585, 3600, 3615, 4995}) {
        platform->setOuterWidth(twips);
        settle(*platform);
        layOut(1, 0);
        EXPECT_EQ(form->frameGeometry().width() * 15, std::max(twips, 3600)) << twips;
        EXPECT_EQ(areaHeight(), int(platform->clientWidth() * 0.625)) << twips;
    }
}

// Maximised, the window keeps its size: native mode shows the native size,
// free mode fills the area below Image1. Minimised, nothing changes until
// the window is restored.
TEST_F(WindowTest, MaximisedAndMinimisedFollowTheirOwnRules) {
    loadAndShow();
    form->showMaximized();
    settle(*platform);
    ASSERT_EQ(platform->windowState(), WindowState::Maximised);
    const QSize maximised = form->size();
    layOut(2, 1);
    EXPECT_EQ(form->size(), maximised);
    EXPECT_EQ(imageSize(), QSize(640, 200));
    EXPECT_EQ(form->label1()->width(), form->centralWidget()->width());
    layOut(4, 0);
    EXPECT_EQ(imageSize(), QSize(form->centralWidget()->width(), areaHeight()));

    form->showMinimized();
    settle(*platform);
    ASSERT_EQ(platform->windowState(), WindowState::Minimised);
    const auto sizes = [&] { return std::tuple(form->size(), imageSize(), form->label1()->width()); };
    const auto before = sizes();
    layOut(3, 1);
    EXPECT_EQ(sizes(), before);
    form->showNormal();
    settle(*platform);
    EXPECT_EQ(imageSize(), QSize(640, 400)) << "restoring runs the layout for the kind now set";
}

TEST_F(WindowTest, StretchTakesTheNearestPixel) {
    loadAndShow();
    setClientWidth(640);
    layOut(1, 0);
    ASSERT_EQ(imageSize(), QSize(640, 400));
    const QImage shown = form->image1()->grab().toImage().convertToFormat(QImage::Format_RGB32);
    const Picture& picture = form->image1()->picture();
    for (int y = 0; y < 400; y += 3)
        for (int x = 0; x < 640; x += 3)
            ASSERT_EQ(shown.pixel(x, y) & 0xFFFFFF, picture.rgb(x / 2, y / 2)) << x << "," << y;
}

}  // namespace
