#include "platform/qt/qtplatform.h"

#include <QApplication>
#include <QFile>
#include <QFileDialog>
#include <QFileInfo>
#include <QMenu>
#include <QMessageBox>
#include <QSettings>
#include <QStandardPaths>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>

#include "platform/qt/form1.h"
#include "platform/qt/form3.h"
#include "platform/qt/handover.h"
#include "platform/xdg_association.h"

namespace velmoric::qt {
namespace {

// How long a size asked for may stay unconfirmed before the window's own
// size counts again (a window manager may ignore or change a request).
constexpr int kRequestLifetimeMs = 1000;

QMessageBox::Icon boxIcon(Icon icon) {
    switch (icon) {
    case Icon::Exclamation: return QMessageBox::Warning;
    case Icon::Question: return QMessageBox::Question;
    case Icon::Information: return QMessageBox::Information;
    case Icon::None: break;
    }
    return QMessageBox::NoIcon;
}

// A carriage return alone ends a line on the platform the texts were
// written for; Qt wants a line feed.
QString displayText(const std::string& text) {
    QString shown = QString::fromStdString(text);
    shown.replace(QStringLiteral("\r\n"), QStringLiteral("\n"));
    shown.replace(QLatin1Char('\r'), QLatin1Char('\n'));
    return shown;
}

// The store of an application: <configuration folder>/<app>/<app>.conf, in
// the INI format, the same file on every desktop.
QString storePath(const std::string& app) {
    const QString name = QString::fromStdString(app);
    const QString folder = QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation);
    return folder + QLatin1Char('/') + name + QLatin1Char('/') + name + QStringLiteral(".conf");
}

// Far more than seven options and any groups a person adds by hand.
constexpr std::size_t kStoreLimit = 1 << 20;

}  // namespace

QString caseInsensitivePattern(const QString& pattern) {
    QString out;
    for (const QChar c : pattern) {
        if (c.isLetter() && c.toUpper() != c.toLower())
            out += QLatin1Char('[') + c.toUpper() + c.toLower() + QLatin1Char(']');
        else
            out += c;
    }
    return out;
}

QStringList nameFiltersFor(const std::string& filter) {
    const QStringList parts = QString::fromStdString(filter).split(QLatin1Char('|'));
    QStringList filters;
    for (qsizetype i = 0; i + 1 < parts.size(); i += 2) {
        QStringList patterns;
        for (const QString& p : parts[i + 1].split(QLatin1Char(';'), Qt::SkipEmptyParts))
            patterns << caseInsensitivePattern(p.trimmed());
        filters << parts[i] + QStringLiteral(" (") + patterns.join(QLatin1Char(' ')) + QLatin1Char(')');
    }
    return filters;
}

int twipsToPixels(int twips) { return int(std::lround(twips / 15.0)); }

QtPlatform::QtPlatform(std::vector<std::string> arguments) : arguments_(std::move(arguments)) {
    expiry_.setSingleShot(true);
    expiry_.setInterval(kRequestLifetimeMs);
    QObject::connect(&expiry_, &QTimer::timeout, [this] { requestsExpired(); });
}

QtPlatform::~QtPlatform() = default;

std::string QtPlatform::commandLine() {
    std::string line;
    for (const std::string& argument : arguments_) {
        if (!line.empty()) line += ' ';
        line += argument;
    }
    return line;
}

// ---- User interface ---------------------------------------------------------

Answer QtPlatform::messageBox(const std::string& text, const std::string& title, Buttons buttons, Icon icon) {
    // Above a modal dialog when one is open, so that its box is not hidden behind it.
    QWidget* parent = QApplication::activeModalWidget();
    if (!parent) parent = form_ && form_->isVisible() ? form_ : nullptr;
    QMessageBox box(boxIcon(icon), QString::fromStdString(title), displayText(text), QMessageBox::NoButton, parent);
    box.setTextFormat(Qt::PlainText);
    if (buttons == Buttons::YesNo) {
        box.setStandardButtons(QMessageBox::Yes | QMessageBox::No);
        box.setDefaultButton(QMessageBox::Yes);
        box.setEscapeButton(QMessageBox::No);
    } else {
        box.setStandardButtons(QMessageBox::Ok);
    }
    const int pressed = box.exec();
    if (buttons == Buttons::Ok) return Answer::Ok;
    return pressed == QMessageBox::Yes ? Answer::Yes : Answer::No;
}

void QtPlatform::yield() { QCoreApplication::processEvents(); }

void QtPlatform::repaint() {
    if (form_) form_->repaint();
}

void QtPlatform::runFileSelector(const FileSelector& settings) {
    // The dialog starts in the folder of the picture opened last, whichever
    // way it came; before any, in the working folder.
    if (!fileName_.empty()) lastFolder_ = fileName_;
    fileName_.clear();
    QFileDialog dialog(form_ && form_->isVisible() ? form_ : nullptr, QString::fromStdString(settings.title));
    // Qt's own dialog: the patterns with their character sets work the same
    // everywhere, and the descriptions already show the patterns.
    dialog.setOption(QFileDialog::DontUseNativeDialog);
    dialog.setOption(QFileDialog::HideNameFilterDetails);
    dialog.setAcceptMode(QFileDialog::AcceptOpen);
    constexpr int kFileMustExist = 0x1000;
    dialog.setFileMode((settings.flags & kFileMustExist) ? QFileDialog::ExistingFile : QFileDialog::AnyFile);
    const QStringList filters = nameFiltersFor(settings.filter);
    dialog.setNameFilters(filters);
    if (!lastFolder_.empty())
        dialog.setDirectory(QFileInfo(QFile::decodeName(QByteArray::fromStdString(lastFolder_))).absolutePath());
    if (settings.filterIndex >= 1 && settings.filterIndex <= filters.size())
        dialog.selectNameFilter(filters[settings.filterIndex - 1]);
    if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty()) return;
    fileName_ = QFile::encodeName(dialog.selectedFiles().first()).toStdString();
}

Picture QtPlatform::picture() { return form_ ? form_->image1()->picture() : Picture(); }

void QtPlatform::setPicture(const Picture& picture) {
    if (form_) form_->image1()->setPicture(picture);
}

// The caption begins with a file name: its bytes are read as the platform
// reads file names.
std::string QtPlatform::caption() {
    return form_ ? QFile::encodeName(form_->label1()->text()).toStdString() : std::string();
}

void QtPlatform::setCaption(const std::string& text) {
    if (form_) form_->label1()->setText(QFile::decodeName(QByteArray::fromStdString(text)));
}

void QtPlatform::setMenuEnabled(int index, bool enabled) {
    if (form_ && index >= 0 && index < 4) form_->mfile(index)->menuAction()->setEnabled(enabled);
}

void QtPlatform::setToolbarEnabled(bool enabled) {
    if (form_) form_->toolbar1()->setEnabled(enabled);
}

void QtPlatform::setTimerEnabled(bool enabled) {
    if (!form_) return;
    if (enabled)
        form_->timer1()->start();
    else
        form_->timer1()->stop();
}

void QtPlatform::showWindow() {
    if (form_) form_->show();
}

void QtPlatform::runSlideDialog(std::int16_t& slideshowFlag) {
    // Built at each opening; nothing of it stays after it closes.
    Form3 dialog(*this, slideshowFlag, form_ && form_->isVisible() ? form_ : nullptr);
    dialog.exec();
}

double QtPlatform::clock() {
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

void QtPlatform::yieldUntil(double deadline) {
    const double left = deadline - clock();
    if (left <= 0) {
        QCoreApplication::processEvents();
        return;
    }
    // The timer wakes the sleeping event loop at the deadline when no other
    // event has come before it.
    QTimer wake;
    wake.setSingleShot(true);
    wake.setTimerType(Qt::PreciseTimer);
    wake.start(std::chrono::milliseconds(std::int64_t(std::ceil(left * 1000))));
    QCoreApplication::processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents);
}

void QtPlatform::setWindowCaption(const std::string& text) {
    if (form_) form_->setWindowTitle(QString::fromStdString(text));
}

// ---- Window measures --------------------------------------------------------

WindowState QtPlatform::windowState() {
    if (!form_) return WindowState::Normal;
    const Qt::WindowStates state = form_->windowState();
    if (state & Qt::WindowMinimized) return WindowState::Minimised;
    if (state & (Qt::WindowMaximized | Qt::WindowFullScreen)) return WindowState::Maximised;
    return WindowState::Normal;
}

QSize QtPlatform::windowSize() const {
    if (!requested_.empty()) return requested_.back();
    return form_ ? form_->size() : QSize();
}

QSize QtPlatform::frameSize() const {
    if (!form_ || !form_->isVisible()) return {};
    const QSize outer = form_->frameGeometry().size();
    const QSize inner = form_->geometry().size();
    return {std::max(0, outer.width() - inner.width()), std::max(0, outer.height() - inner.height())};
}

int QtPlatform::outerWidth() { return pixelsToTwips(windowSize().width() + frameSize().width()); }
int QtPlatform::outerHeight() { return pixelsToTwips(windowSize().height() + frameSize().height()); }

void QtPlatform::setOuterWidth(int twips) {
    const int width = std::max(1, twipsToPixels(twips) - frameSize().width());
    requestWindowSize({width, windowSize().height()});
}

void QtPlatform::setOuterHeight(int twips) {
    const int height = std::max(1, twipsToPixels(twips) - frameSize().height());
    requestWindowSize({windowSize().width(), height});
}

int QtPlatform::clientWidth() { return windowSize().width(); }

int QtPlatform::clientHeight() {
    if (!form_) return 0;
    const QSize size = windowSize();
    return std::max(0, size.height() - form_->menuBarHeightFor(size.width()));
}

int QtPlatform::imageTop() { return form_ ? form_->image1()->y() : 0; }

void QtPlatform::setImageSize(int width, int height) {
    if (form_) form_->image1()->resize(std::max(0, width), std::max(0, height));
}

void QtPlatform::setLabelWidth(int width) {
    if (form_) form_->label1()->resize(std::max(0, width), form_->label1()->height());
}

void QtPlatform::requestWindowSize(QSize size) {
    if (!form_ || size == windowSize()) return;  // no change, no further resize
    if (form_->isVisible()) {
        requested_.push_back(size);
        expiry_.start();
    }
    // Qt reports the new size at once, inside the call: the layout runs
    // again, nested, and finds nothing more to do.
    const bool outer = resizing_;
    resizing_ = true;
    form_->resize(size);
    resizing_ = outer;
}

void QtPlatform::windowSystemReported(QSize size) {
    staleSize_ = QSize();
    const auto match = std::find(requested_.begin(), requested_.end(), size);
    if (match == requested_.end()) {
        // The user or the window manager chose this size: it counts from now on.
        forgetRequests();
        return;
    }
    if (match + 1 != requested_.end()) staleSize_ = size;
    requested_.erase(requested_.begin(), match + 1);
    if (requested_.empty()) expiry_.stop();
}

bool QtPlatform::windowSizeReported(QSize size) {
    if (resizing_) return true;
    if (staleSize_.isValid() && size == staleSize_) {
        staleSize_ = QSize();
        return false;
    }
    return true;
}

void QtPlatform::forgetRequests() {
    requested_.clear();
    expiry_.stop();
}

void QtPlatform::requestsExpired() {
    if (requested_.empty() || !form_) return;
    const QSize wanted = requested_.back();
    forgetRequests();
    // Lay out once more with the size the window really got, but do not
    // keep asking for a size the window manager refuses.
    if (form_->size() != wanted && wanted != refused_) {
        refused_ = wanted;
        form_->viewer().Form_Resize();
    }
}

// ---- Settings store -----------------------------------------------------------

// QSettings reads the store it is given whatever it is (a pipe at the name
// would stop the start-up for good, a huge file fill the memory) and would
// write through a link at the name into the file it points to. So it works
// on a copy in the private folder, a new name each time so that no cached
// copy of QSettings is taken for it: a copy of the store when that is a
// regular file of a sane size (reached through a link only for reading),
// else an empty one.
std::string QtPlatform::copyOfStore(const std::string& path, bool throughLink) {
    const std::string copy = privateFolder() + "/options" + std::to_string(++storeCopies_) + ".conf";
    std::vector<std::uint8_t> bytes;
    try {
        struct stat st {};
        if (throughLink || (::lstat(path.c_str(), &st) == 0 && S_ISREG(st.st_mode)))
            bytes = files::readWhole(path, kStoreLimit);  // a regular file only
    } catch (const std::exception&) {
    }
    files::writeNew(copy, bytes);
    return copy;
}

std::optional<std::string> QtPlatform::readSetting(const std::string& app, const std::string& section,
                                                   const std::string& key) {
    QVariant value;
    try {
        const std::string copy = copyOfStore(storePath(app).toStdString(), true);
        {
            QSettings store(QString::fromStdString(copy), QSettings::IniFormat);
            store.beginGroup(QString::fromStdString(section));
            value = store.value(QString::fromStdString(key));
        }
        ::unlink(copy.c_str());
    } catch (const std::exception&) {
    }
    if (!value.isValid()) return std::nullopt;
    return value.toString().toStdString();
}

// The changed copy replaces the store the way every file is written: a new
// file renamed into place. Failures are not looked at, as QSettings' are not.
void QtPlatform::writeSetting(const std::string& app, const std::string& section, const std::string& key,
                              const std::string& value) {
    const std::string path = storePath(app).toStdString();
    std::string copy;
    try {
        copy = copyOfStore(path, false);
        {
            QSettings store(QString::fromStdString(copy), QSettings::IniFormat);
            store.beginGroup(QString::fromStdString(section));
            store.setValue(QString::fromStdString(key), QString::fromStdString(value));
        }
        std::filesystem::create_directories(std::filesystem::path(path).parent_path());
        files::replaceAtomically(path, files::readWhole(copy, kStoreLimit));
    } catch (const std::exception&) {
    }
    if (!copy.empty()) ::unlink(copy.c_str());
}

// ---- File association -----------------------------------------------------------

bool QtPlatform::extensionRegistered(const std::string& extension) { return xdg::globKnown(extension); }

void QtPlatform::registerAssociation(const Association& association) {
    try {
        xdg::writeAssociation(association);
    } catch (const std::exception&) {
        // Not reported: the question simply comes again at the next start.
    }
}

// ---- Hand-over between copies -------------------------------------------------

namespace {

QByteArray programBaseName() {
    return QFile::encodeName(QFileInfo(QCoreApplication::applicationFilePath()).completeBaseName());
}

}  // namespace

bool QtPlatform::earlierCopy() {
    if (!handover_) {
        handover_ = std::make_unique<Handover>(programBaseName());
        handover_->handler = commandHandler_;
    }
    return handover_->earlierCopy();
}

bool QtPlatform::sendCommand(const std::string& command) {
    return handover_ && handover_->send(commandForEarlierCopy(command));
}

void QtPlatform::setLinkTopic(const std::string& topic) {
    if (handover_) handover_->setTopic(topic);
}

void QtPlatform::setCommandHandler(std::function<void(const std::string&)> handler) {
    commandHandler_ = std::move(handler);
    if (handover_) handover_->handler = commandHandler_;
}

void QtPlatform::endProcess() {
    std::fflush(nullptr);
    std::_Exit(0);
}

// ---- Text and picture -------------------------------------------------------------

std::string QtPlatform::fileNameCapitals(const std::string& filePart) {
    return QFile::encodeName(QFile::decodeName(QByteArray::fromStdString(filePart)).toUpper()).toStdString();
}

void QtPlatform::setImageNative(bool native) {
    if (form_) form_->image1()->setNative(native);
}

}  // namespace velmoric::qt
