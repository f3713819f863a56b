#pragma once
// `Form4`, the options dialog: the seven options in check boxes, option
// buttons and a scroll bar, and a miniature sheet on which the picture of
// the main window shows where it will lie on the printed page. The rules
// are the core's OptionsDialog; this form lays out the controls in twips,
// carries out what the rules set and forwards the controls' events. Controls
// carry their design names as object names ("Option1_4" for `Option1`(4)).
#include <QDialog>
#include <QImage>
#include <array>

#include "options/optionsdialog.h"

class QCheckBox;
class QLabel;
class QPushButton;
class QRadioButton;
class QScrollBar;

namespace velmoric::qt {

class Form1;
class Image1;

// `Image1` of the dialog: the main window's picture object and its screen
// image, both shared with the main window, stretched to the nearest pixel.
class PreviewImage : public QWidget {
public:
    explicit PreviewImage(QWidget* parent);
    // Takes the screen image from `shown` when it shows this very picture.
    void setPicture(const Picture& picture, const Image1* shown);
    const Picture& picture() const { return picture_; }
    const QImage& image() const { return image_; }

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    Picture picture_;
    QImage image_;
};

class Form4 : public QDialog, private OptionsControls {
    Q_OBJECT
public:
    // The controls in their created state; load() fills them.
    explicit Form4(Form1& owner);

    // Form_Load: the options into the controls.
    void load() { rules_.Form_Load(); }

    QCheckBox* check(int number) const { return checks_.at(std::size_t(number - 1)); }
    QRadioButton* option1(int index) const { return option1_.at(std::size_t(index)); }
    QRadioButton* option2(int index) const { return option2_.at(std::size_t(index)); }
    QScrollBar* hscroll1() const { return hscroll1_; }
    QLabel* label3() const { return label3_; }
    QWidget* picture1() const { return picture1_; }
    PreviewImage* image1() const { return image1_; }
    QPushButton* command1() const { return command1_; }
    // Picture1 and Image1 in twips, as the rules set them.
    QSize sheetTwips() const { return sheet_; }
    QRect previewTwips() const { return preview_; }

    // Every way of closing (Done., the close box, Escape) ends here and
    // stores what the dialog shows.
    void done(int result) override;

private:
    void buildControls();
    void placePreview();

    int checkValue(int number) override;
    void setCheckValue(int number, int value) override;
    bool option1Selected(int index) override;
    void selectOption1(int index) override;
    bool option2Selected(int index) override;
    void selectOption2(int index) override;
    int scrollValue() override;
    void setScrollValue(int value) override;
    void setLabel3(const std::string& text) override;
    int sheetWidth() override { return sheet_.width(); }
    int sheetHeight() override { return sheet_.height(); }
    void setSheetSize(int width, int height) override;
    void setPreviewTop(int top) override;
    void setPreviewLeft(int left) override;
    void setPreviewSize(int width, int height) override;
    void setPreviewPicture(const Picture& picture) override;
    void unload() override { accept(); }

    const Image1* shown_;  // Image1 of the main window
    OptionsDialog rules_;
    std::array<QCheckBox*, 4> checks_{};
    std::array<QRadioButton*, 5> option1_{};
    std::array<QRadioButton*, 2> option2_{};
    QScrollBar* hscroll1_ = nullptr;
    QLabel* label3_ = nullptr;
    QWidget* picture1_ = nullptr;
    PreviewImage* image1_ = nullptr;
    QPushButton* command1_ = nullptr;
    QSize sheet_;
    QRect preview_;
    bool unloaded_ = false;
};

}  // namespace velmoric::qt
