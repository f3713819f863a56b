#include "platform/qt/form3.h"

#include "platform/qt/controls.h"

#include <QComboBox>
#include <QDir>
#include <QFile>
#include <QFontDatabase>
#include <QListWidget>
#include <QPushButton>
#include <QStorageInfo>
#include <QStyledItemDelegate>
#include <algorithm>

#include "platform/folders.h"
#include "platform/platform.h"
#include "platform/qt/form1.h"
#include "tools/errorbox.h"

namespace velmoric::qt {
namespace {

constexpr int kInnerWidth = 4440;
constexpr int kInnerHeight = 2970;
constexpr QPoint kPosition{4155, 3510};
constexpr int kIndent = 10;                   // pixels for each level of Dir1
constexpr int kLevelRole = Qt::UserRole + 1;  // Qt::UserRole holds the folder's path

// Each entry of Dir1 stands in from the left by its depth below the root.
class LevelDelegate : public QStyledItemDelegate {
public:
    using QStyledItemDelegate::QStyledItemDelegate;
    void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override {
        QStyleOptionViewItem shifted(option);
        shifted.rect.adjust(index.data(kLevelRole).toInt() * kIndent, 0, 0, 0);
        QStyledItemDelegate::paint(painter, shifted, index);
    }
    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override {
        return QStyledItemDelegate::sizeHint(option, index) + QSize(index.data(kLevelRole).toInt() * kIndent, 0);
    }
};

// Whether `path` lies on the volume mounted at `root`.
bool onVolume(const QString& path, const QString& root) {
    return root == QLatin1String("/") || path == root || path.startsWith(root + QLatin1Char('/'));
}

}  // namespace

QStringList mountedVolumes() {
    QStringList roots;
    for (const QStorageInfo& volume : QStorageInfo::mountedVolumes())
        if (volume.isValid() && volume.isReady() && !roots.contains(volume.rootPath())) roots << volume.rootPath();
    roots.removeAll(QStringLiteral("/"));
    std::sort(roots.begin(), roots.end());
    roots.prepend(QStringLiteral("/"));
    return roots;
}

Form3::Form3(Platform& platform, std::int16_t& slideshowFlag, QWidget* parent)
    : QDialog(parent, Qt::Dialog | Qt::CustomizeWindowHint | Qt::WindowTitleHint | Qt::WindowSystemMenuHint |
                          Qt::WindowCloseButtonHint | Qt::MSWindowsFixedSizeDialogHint),
      platform_(platform),
      slideshowFlag_(slideshowFlag) {
    setObjectName(QStringLiteral("Form3"));
    setWindowTitle(QStringLiteral("Select Slides."));
    setModal(true);
    setFixedSize(twipsToPixels(kInnerWidth), twipsToPixels(kInnerHeight));
    move(twipsToPixels(kPosition.x()), twipsToPixels(kPosition.y()));
    setFont(designFont());
    setBackground(this, kFormBackground);
    buildControls();

    QString here = QDir::rootPath();
    try {
        here = QFile::decodeName(files::currentFolder().c_str());
    } catch (const PlatformError&) {
        // A current folder that has gone: the lists start at the root.
    }
    showFolder(here);
}

void Form3::buildControls() {
    drive1_ = place(new QComboBox(this), "Drive1", {1080, 120, 2175, 315});
    drive1_->addItems(mountedVolumes());
    dir1_ = place(new QListWidget(this), "Dir1", {120, 600, 4215, 1440});
    dir1_->setItemDelegate(new LevelDelegate(dir1_));
    dir1_->setIconSize(QSize(16, 16));
    command1_ = place(new QPushButton(QStringLiteral("Start"), this), "Command1", {480, 2280, 1215, 495});
    command2_ = place(new QPushButton(QStringLiteral("Cancel"), this), "Command2", {2760, 2280, 1215, 495});
    // Neither button is the default: Enter in Dir1 opens a folder and must
    // not start the show.
    for (QPushButton* button : {command1_, command2_}) button->setAutoDefault(false);
    setTabOrder(drive1_, dir1_);
    setTabOrder(dir1_, command1_);
    setTabOrder(command1_, command2_);

    connect(drive1_, &QComboBox::currentIndexChanged, this, [this] { Drive1_Change(); });
    // Queued: the list is refilled, and its items deleted, after the view
    // has finished with the activation.
    connect(dir1_, &QListWidget::itemActivated, this, [this](QListWidgetItem* item) {
        const QString path = item->data(Qt::UserRole).toString();
        QMetaObject::invokeMethod(this, [this, path] { setDir1Path(path); }, Qt::QueuedConnection);
    });
    connect(command1_, &QPushButton::clicked, this, [this] {
        slideshowFlag_ = 0;
        accept();
    });
    connect(command2_, &QPushButton::clicked, this, &QDialog::reject);
}

void Form3::setDir1Path(const QString& path) {
    if (!Dir1_Change(path)) return;
    QString here = path;
    try {
        here = QFile::decodeName(files::currentFolder().c_str());
    } catch (const PlatformError&) {
    }
    showFolder(here);
}

void Form3::Drive1_Change() {
    const QString root = drive1_->currentText();
    if (drive1_->currentIndex() == drive_ || root.isEmpty()) return;
    setDir1Path(root);
    if (drive1_->currentIndex() != drive_) {
        // The change failed: Drive1 shows the volume it showed before.
        const QSignalBlocker quiet(drive1_);
        drive1_->setCurrentIndex(drive_);
    }
}

bool Form3::Dir1_Change(const QString& path) {
    try {
        files::changeFolder(QFile::encodeName(path).toStdString());
        return true;
    } catch (const PlatformError& e) {
        platform_.messageBox(errorBoxText(e.what()), "Error.", Buttons::Ok, Icon::Exclamation);
        return false;
    }
}

void Form3::showFolder(const QString& path) {
    path_ = path;
    dir1_->clear();
    const QIcon open = style()->standardIcon(QStyle::SP_DirOpenIcon);
    const QIcon closed = style()->standardIcon(QStyle::SP_DirClosedIcon);
    const auto add = [this](const QIcon& icon, const QString& text, const QString& full, int level) {
        auto* item = new QListWidgetItem(icon, text, dir1_);
        item->setData(Qt::UserRole, full);
        item->setData(kLevelRole, level);
        return item;
    };
    // The root, the parents and the folder itself, open; then its sub-folders.
    QListWidgetItem* current = add(open, QStringLiteral("/"), QStringLiteral("/"), 0);
    const QStringList parts = path.split(QLatin1Char('/'), Qt::SkipEmptyParts);
    QString full;
    for (qsizetype i = 0; i < parts.size(); ++i) {
        full += QLatin1Char('/') + parts[i];
        current = add(open, parts[i], full, int(i) + 1);
    }
    const QDir folder(path);
    for (const QString& name : folder.entryList(QDir::Dirs | QDir::NoDotAndDotDot, QDir::Name | QDir::IgnoreCase))
        add(closed, name, folder.filePath(name), int(parts.size()) + 1);
    dir1_->setCurrentItem(current);
    // Parents above and sub-folders below both in sight.
    dir1_->scrollToItem(current, QAbstractItemView::PositionAtCenter);

    // Drive1 follows to the volume that holds the folder, without a change
    // of its own.
    int best = 0;
    for (int i = 0; i < drive1_->count(); ++i)
        if (onVolume(path, drive1_->itemText(i)) && drive1_->itemText(i).size() > drive1_->itemText(best).size())
            best = i;
    const QSignalBlocker quiet(drive1_);
    drive1_->setCurrentIndex(best);
    drive_ = best;
}

}  // namespace velmoric::qt
