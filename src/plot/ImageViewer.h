#pragma once

#include <QMessageBox>
#include <QWidget>
#include <cstdint>
#include <opencv2/core.hpp>
#include <vector>

class QCheckBox;
class QContextMenuEvent;
class QLabel;
class QMenu;
class QScrollArea;

namespace Tessaly {

// The viewer's own texts, for the widget and for its tests.
namespace ImageViewerText {
inline constexpr char noImage[] = "No Image";
inline constexpr char zoomIn[] = "+";
inline constexpr char zoomInTip[] = "Zoom In";
inline constexpr char zoomOut[] = "-";
inline constexpr char zoomOutTip[] = "Zoom Out";
inline constexpr char actualSize[] = "1:1";
inline constexpr char actualSizeTip[] = "Actual Size";
inline constexpr char fit[] = "Fit";
inline constexpr char fitTip[] = "Fit to Window";
inline constexpr char showMask[] = "Show Mask";
inline constexpr char showMaskTip[] = "Show mask overlay";
inline constexpr char autoContrast[] = "Auto Contrast";
inline constexpr char autoContrastTip[] = "Stretch image contrast to full range";
inline constexpr char buttonStyle[] = "QPushButton { padding: 2px 6px; min-height: 16px; min-width: 20px; }";
inline constexpr char saveImageAction[] = "Save Image...";
inline constexpr char saveDialogTitle[] = "Save Image";
inline constexpr char saveFilters[] = "PNG Images (*.png);;JPEG Images (*.jpg);;All Files (*)";
inline constexpr char nothingToSaveTitle[] = "No Image";
inline constexpr char nothingToSave[] = "There is no image to save.";
inline constexpr char savedTitle[] = "Success";
inline constexpr char saved[] = "Image saved successfully.";
inline constexpr char saveFailedTitle[] = "Error";
inline constexpr char saveFailed[] = "Failed to save image: %1";
// Detail of saveFailed when the image writer refuses the file without an exception.
inline constexpr char fileNotWritten[] = "the file could not be written";
} // namespace ImageViewerText

// Shows the camera image of one event, optionally with its mask tinted and its contrast stretched,
// zoomed as the user likes. It holds the event's raw pixels only, never the file. Saving writes those
// raw pixels, not what is displayed.
class ImageViewer : public QWidget
{
    Q_OBJECT

public:
    explicit ImageViewer(QWidget* parent = nullptr);
    ~ImageViewer() override;

    // Shows `pixels`, height rows of width bytes. Clears the viewer when there are fewer than
    // width x height pixels or the size is not positive. Fits the image to the window unless the user
    // has zoomed since the last "Fit".
    void setImage(const std::vector<std::uint8_t>& pixels, int width, int height, const QString& info);
    // The same with a mask of the same size; non-zero mask pixels are tinted.
    void setImageWithMask(const std::vector<std::uint8_t>& pixels, const std::vector<std::uint8_t>& mask,
        int width, int height, const QString& info);
    void clearImage();
    // Empties the view and says why there is nothing to see, e.g. for a file without images.
    void clearImage(const QString& info);
    // Draws the image again with the current contrast, mask and zoom.
    void updateDisplay();

    bool isMaskShown() const;
    // The mask control is on offer only for files that have masks.
    void setMaskControlEnabled(bool enabled);
    bool isAutoContrast() const { return m_autoContrast; }
    bool hasImage() const { return !m_currentImage.empty(); }
    double zoomFactor() const { return m_zoomFactor; }
    bool isFitMode() const { return m_fitMode; }

public slots:
    void zoomIn();
    void zoomOut();
    void fitToWindow();
    void actualSize();

signals:
    void imageSaved(QString filename);
    void showMaskToggled(bool checked);
    void autoContrastToggled(bool checked);

protected:
    void contextMenuEvent(QContextMenuEvent* event) override;

    // The dialogs of saving and the context menu, overridable so that they can run without a user.
    // Returns the chosen file name, empty on cancel, and the chosen filter in `selectedFilter`.
    virtual QString askSaveFileName(const QString& title, const QString& filters, QString* selectedFilter);
    virtual void showMessage(QMessageBox::Icon icon, const QString& title, const QString& text);
    virtual void execContextMenu(QMenu& menu, const QPoint& globalPosition);

private slots:
    void saveImage();

private:
    void setZoom(double factor);

    QLabel* m_imageLabel = nullptr;
    QLabel* m_infoLabel = nullptr;
    QScrollArea* m_scrollArea = nullptr;
    QCheckBox* m_showMaskBox = nullptr;
    QCheckBox* m_autoContrastBox = nullptr;
    // What saving writes: a copy of the event's image.
    cv::Mat m_currentImage;
    // The event's image, 8-bit, one channel.
    cv::Mat m_originalImage;
    // The event's mask, same size, or empty.
    cv::Mat m_maskImage;
    double m_zoomFactor = 1.0;
    // Fit each new image to the window; off once the user zooms.
    bool m_fitMode = true;
    bool m_autoContrast = false;
};

} // namespace Tessaly
