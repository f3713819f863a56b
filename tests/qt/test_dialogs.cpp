// The real message box of QtPlatform, answered as soon as it is on screen,
// and the open dialog's patterns. The real open dialog is run in the window
// tests of files from outside.
#include <QAbstractButton>
#include <QMessageBox>
#include <QRegularExpression>

#include "window_fixture.h"

using namespace vqt;

namespace {

TEST(RealDialogs, MessageBoxShowsTitleTextButtonsAndIconAndGivesTheAnswer) {
    QtPlatform platform{{}};
    struct Row { Buttons buttons; Icon icon; QMessageBox::StandardButton click; Answer answer; QMessageBox::Icon shown; };
    const Row rows[] = {
        {Buttons::YesNo, Icon::None, QMessageBox::No, Answer::No, QMessageBox::NoIcon},
        {Buttons::YesNo, Icon::Question, QMessageBox::Yes, Answer::Yes, QMessageBox::Question},
        {Buttons::Ok, Icon::Exclamation, QMessageBox::Ok, Answer::Ok, QMessageBox::Warning}};
    for (const auto& row : rows) {
        SCOPED_TRACE(int(row.icon));
        whenModal<QMessageBox>([&](QMessageBox* box) {
            EXPECT_EQ(box->windowTitle(), "Register Files");
            EXPECT_EQ(box->text(), "first\nsecond") << "a carriage return ends a line";
            EXPECT_EQ(box->icon(), row.shown);
            EXPECT_EQ(box->buttons().size(), row.buttons == Buttons::Ok ? 1 : 2);
            box->button(row.click)->click();
        });
        EXPECT_EQ(platform.messageBox("first\rsecond", "Register Files", row.buttons, row.icon), row.answer);
    }
}

TEST(NameFilters, PatternsMatchInAnyCase) {
    const std::tuple<const char*, const char*, bool> rows[] = {
        {"*.NEO", "x.neo", true}, {"*.NEO", "X.NEO", true},  {"*.NEO", "x.Neo", true}, {"*.NEO", "x.ne", false},
        {"*.PI?", "a.pI3", true}, {"*.PI?", "a.PI", false},  {"*.TN?", "b.tny", true}, {"*.CA?", "c.ca1", true},
        {"*.SPU", "s.spc", false}, {"*.MAC", "m.Mac", true}};
    for (const auto& [pattern, name, matches] : rows) {
        const QString wildcard = caseInsensitivePattern(QString::fromLatin1(pattern));
        const QRegularExpression re(QRegularExpression::wildcardToRegularExpression(wildcard));
        EXPECT_EQ(re.match(QString::fromLatin1(name)).hasMatch(), matches) << pattern << " " << name;
    }
}

}  // namespace
