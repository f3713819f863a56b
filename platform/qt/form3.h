#pragma once
// `Form3`, the modal dialog in which the user picks the folder of a slide
// show. `Drive1` lists the mounted volumes, the root folder first; `Dir1`
// lists the folders in the classic form: the current folder with its parents
// above it and its sub-folders below it. Both show the process's current
// folder when the dialog opens, and the current folder follows every change
// in them: the show walks through whatever folder is current when "Start"
// closes the dialog. Controls carry their design names as object names.
#include <QDialog>
#include <QStringList>
#include <cstdint>

class QComboBox;
class QListWidget;
class QPushButton;

namespace velmoric {
class Platform;
}

namespace velmoric::qt {

// The root paths of the mounted volumes: "/" first, then the others in
// the order of their paths.
QStringList mountedVolumes();

class Form3 : public QDialog {
    Q_OBJECT
public:
    // `slideshowFlag` is set false by "Start" and left by every other way
    // of closing.
    Form3(Platform& platform, std::int16_t& slideshowFlag, QWidget* parent);

    QComboBox* drive1() const { return drive1_; }
    QListWidget* dir1() const { return dir1_; }
    QPushButton* command1() const { return command1_; }
    QPushButton* command2() const { return command2_; }
    // Dir1.Path: the folder that Dir1 shows as current.
    QString dir1Path() const { return path_; }
    // Sets Dir1.Path, which runs Dir1_Change.
    void setDir1Path(const QString& path);

private:
    void buildControls();
    void Drive1_Change();
    // Makes `path` the process's current folder; on failure shows the error
    // box and returns false, with both lists as they were.
    bool Dir1_Change(const QString& path);
    void showFolder(const QString& path);

    Platform& platform_;
    std::int16_t& slideshowFlag_;
    QComboBox* drive1_ = nullptr;
    QListWidget* dir1_ = nullptr;
    QPushButton* command1_ = nullptr;
    QPushButton* command2_ = nullptr;
    QString path_;
    int drive_ = -1;  // the index Drive1 shows
};

}  // namespace velmoric::qt
