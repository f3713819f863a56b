// Opening through the window and the sizing of window and picture by kind,
// mode and window state, measured on the real widgets.
#include <QRegularExpression>

#include "window_fixture.h"

using namespace vqt;

namespace {

struct KindRow {
    int kind, width, height;
    double freeRatio;
};

const KindRow kKinds[] = {{1, 320, 200, 0.625}, {2, 640, 200, 0.625}, {3, 640, 400, 0.625}, {4, 576, 720, 1.25}};

TEST_F(WindowTest, NativeModeGivesTheNativeWidthAndHeight) {
    loadAndShow();
    for (const KindRow& k : kKinds) {
        layOut(k.kind, 1);
        EXPECT_EQ(platform->clientWidth(), k.width) << "kind " << k.kind;
        EXPECT_EQ(form->centralWidget()->width(), k.width) << "kind " << k.kind;
        EXPECT_EQ(imageSize(), QSize(k.width, k.height)) << "kind " << k.kind;
        EXPECT_EQ(areaHeight(), k.height) << "kind " << k.kind;
        EXPECT_EQ(form->label1()->width(), k.width) << "kind " << k.kind;
        EXPECT_EQ(platform->clientHeight(), form->centralWidget()->height()) << "kind " << k.kind;
    }
}

TEST_F(WindowTest, FreeModeHoldsTheAreaAtTheClientWidthTimesTheRatio) {
    loadAndShow();
    for (const KindRow& k : kKinds) {
        for (int width : {640, 333, 500}) {
            viewer().kind = std::int16_t(k.kind);
            viewer().options.size = 0;
            setClientWidth(width);
            viewer().Form_Resize();
            settle(*platform);
            EXPECT_EQ(form->centralWidget()->width(), width);
            EXPECT_EQ(areaHeight(), int(width * k.freeRatio)) << "kind " << k.kind << " at " << width;
            EXPECT_EQ(imageSize(), QSize(width, int(width * k.freeRatio))) << "kind " << k.kind;
        }
    }
    layOut(2, 0);
    setClientWidth(640);
    layOut(2, 0);
    EXPECT_EQ(imageSize(), QSize(640, 400)) << "kind 2 is shown twice as high in free mode";
}

TEST_F(WindowTest, FreeModeKeepsTheOuterWidthAtLeast3600Twips) {
    loadAndShow();
    viewer().options.size = 0;
    for (int twips : {3000, 3585, 3600, 3615, 4995}) {
        platform->setOuterWidth(twips);
        settle(*platform);
        viewer().Form_Resize();
        settle(*platform);
        EXPECT_EQ(platform->outerWidth(), std::max(twips, 3600)) << twips;
        EXPECT_EQ(form->frameGeometry().width() * 15, std::max(twips, 3600)) << twips;
        EXPECT_EQ(platform->clientHeight(), form->centralWidget()->height()) << twips;
        EXPECT_EQ(areaHeight(), int(platform->clientWidth() * 0.625)) << twips;
    }
    layOut(1, 1);
    EXPECT_EQ(platform->clientWidth(), 320) << "native mode has no minimum";
}

TEST_F(WindowTest, MaximisedNativeShowsTheNativeSizeWithoutResizingTheWindow) {
    loadAndShow();
    viewer().options.size = 1;
    viewer().kind = 2;
    form->showMaximized();
    settle(*platform);
    ASSERT_EQ(platform->windowState(), WindowState::Maximised);
    const QSize maximised = form->size();
    viewer().Form_Resize();
    settle(*platform);
    EXPECT_EQ(form->size(), maximised);
    EXPECT_EQ(imageSize(), QSize(640, 200));
    EXPECT_EQ(form->label1()->width(), form->centralWidget()->width());
}

TEST_F(WindowTest, MaximisedFreeFillsTheAreaBelowImage1) {
    loadAndShow();
    viewer().options.size = 0;
    viewer().kind = 4;
    form->showMaximized();
    settle(*platform);
    ASSERT_EQ(platform->windowState(), WindowState::Maximised);
    viewer().Form_Resize();
    settle(*platform);
    EXPECT_EQ(imageSize(), QSize(form->centralWidget()->width(), areaHeight()));
}

TEST_F(WindowTest, MinimisedChangesNothingAndRestoringLaysOut) {
    loadAndShow();
    layOut(1, 1);
    form->showMinimized();
    settle(*platform);
    ASSERT_EQ(platform->windowState(), WindowState::Minimised);
    const QSize window = form->size(), image = imageSize();
    const int label = form->label1()->width();
    layOut(3, 1);
    EXPECT_EQ(form->size(), window);
    EXPECT_EQ(imageSize(), image);
    EXPECT_EQ(form->label1()->width(), label);

    form->showNormal();
    settle(*platform);
    EXPECT_EQ(imageSize(), QSize(640, 400)) << "restoring runs the layout for the kind now set";
}

TEST_F(WindowTest, TheFirstTickShowsTheWindowAndOpensTheCommandLine) {
    const std::string path = programDir.file("tick.pi1");
    vtest::writeFile(path, vtest::randomBytes(32034, 9));
    make({path});
    knowSpuGlob();
    viewer().options.size = 1;
    form->load();
    QElapsedTimer t;
    t.start();
    while (form->timer1()->isActive() && t.elapsed() < 3000) QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
    settle(*platform);
    EXPECT_TRUE(form->isVisible());
    EXPECT_FALSE(form->timer1()->isActive()) << "Timer1 ticks once";
    EXPECT_EQ(form->label1()->text(), "TICK.PI1  Degas 320*200 16 Colour");
    EXPECT_EQ(form->image1()->picture().width(), 320);
    EXPECT_EQ(viewer().openmode, 0);
}

TEST_F(WindowTest, StretchTakesTheNearestPixel) {
    loadAndShow();
    layOut(1, 0);
    setClientWidth(640);
    layOut(1, 0);
    ASSERT_EQ(imageSize(), QSize(640, 400));
    const QImage shown = form->image1()->grab().toImage().convertToFormat(QImage::Format_RGB32);
    const Picture& picture = form->image1()->picture();
    for (int y = 0; y < 400; y += 3)
        for (int x = 0; x < 640; x += 3)
            ASSERT_EQ(shown.pixel(x, y) & 0xFFFFFF, picture.rgb(x / 2, y / 2)) << x << "," << y;
}

// ---- The open dialog's filters ------------------------------------------------

TEST(NameFilters, PatternsMatchInAnyCase) {
    struct Row {
        const char* pattern;
        const char* name;
        bool matches;
    };
    const Row rows[] = {
        {"*.NEO", "x.neo", true}, {"*.NEO", "X.NEO", true},  {"*.NEO", "x.Neo", true}, {"*.NEO", "x.ne", false},
        {"*.PI?", "a.pI3", true}, {"*.PI?", "a.PI", false},  {"*.TN?", "b.tny", true}, {"*.CA?", "c.ca1", true},
        {"*.SPU", "s.spc", false}, {"*.MAC", "m.Mac", true},
    };
    for (const Row& r : rows) {
        const QRegularExpression re(
            QRegularExpression::wildcardToRegularExpression(caseInsensitivePattern(QString::fromLatin1(r.pattern))));
        EXPECT_EQ(re.match(QString::fromLatin1(r.name)).hasMatch(), r.matches) << r.pattern << " " << r.name;
    }
}

}  // namespace
