#include "plot/ImageViewer.h"

#include "core/SaveFileSuffix.h"
#include "ui/FlowLayout.h"

#include <QCheckBox>
#include <QContextMenuEvent>
#include <QFile>
#include <QFileDialog>
#include <QImage>
#include <QLabel>
#include <QMenu>
#include <QPixmap>
#include <QPushButton>
#include <QScrollArea>
#include <QVBoxLayout>
#include <algorithm>
#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>

namespace Tessaly {

namespace {

constexpr double zoomStep = 1.25;
constexpr double minimumZoom = 0.1;
constexpr double maximumZoom = 10.0;

// Tint of mask pixels, in OpenCV's BGR order, and its share in the blend.
const cv::Scalar maskTint(0, 204, 254);
constexpr double imageWeight = 0.7;
constexpr double tintWeight = 0.3;

bool holdsFrame(const std::vector<std::uint8_t>& pixels, int width, int height)
{
    return !pixels.empty() && width >= 1 && height >= 1
        && static_cast<std::size_t>(width) * static_cast<std::size_t>(height) <= pixels.size();
}

// A one-channel matrix of height rows of width bytes, owning a copy of the first width x height bytes.
cv::Mat frameCopy(const std::vector<std::uint8_t>& pixels, int width, int height)
{
    return cv::Mat(height, width, CV_8UC1, const_cast<std::uint8_t*>(pixels.data())).clone();
}

QPixmap toPixmap(const cv::Mat& image)
{
    if (image.empty())
        return QPixmap();
    if (image.channels() == 1)
        return QPixmap::fromImage(QImage(
            image.data, image.cols, image.rows, static_cast<int>(image.step), QImage::Format_Grayscale8));
    if (image.channels() == 3) {
        cv::Mat rgb;
        cv::cvtColor(image, rgb, cv::COLOR_BGR2RGB);
        return QPixmap::fromImage(
            QImage(rgb.data, rgb.cols, rgb.rows, static_cast<int>(rgb.step), QImage::Format_RGB888));
    }
    return QPixmap();
}

QPushButton* makeButton(const char* text, const char* toolTip, QWidget* parent)
{
    auto* button = new QPushButton(QString::fromUtf8(text), parent);
    button->setToolTip(QString::fromUtf8(toolTip));
    button->setStyleSheet(QString::fromUtf8(ImageViewerText::buttonStyle));
    return button;
}

} // namespace

ImageViewer::ImageViewer(QWidget* parent)
    : QWidget(parent)
{
    using namespace ImageViewerText;

    m_infoLabel = new QLabel(QString::fromUtf8(noImage), this);
    m_infoLabel->setObjectName("infoLabel");
    // In a narrow panel the title wraps rather than widening the viewer.
    m_infoLabel->setWordWrap(true);

    m_imageLabel = new QLabel;
    m_imageLabel->setObjectName("imageLabel");
    m_imageLabel->setAlignment(Qt::AlignCenter);
    m_scrollArea = new QScrollArea(this);
    m_scrollArea->setAlignment(Qt::AlignCenter);
    m_scrollArea->setWidget(m_imageLabel);

    QPushButton* zoomInButton = makeButton(ImageViewerText::zoomIn, zoomInTip, this);
    QPushButton* zoomOutButton = makeButton(ImageViewerText::zoomOut, zoomOutTip, this);
    QPushButton* actualSizeButton = makeButton(ImageViewerText::actualSize, actualSizeTip, this);
    QPushButton* fitButton = makeButton(fit, fitTip, this);
    m_showMaskBox = new QCheckBox(QString::fromUtf8(showMask), this);
    m_showMaskBox->setToolTip(QString::fromUtf8(showMaskTip));
    m_showMaskBox->setChecked(true);
    m_autoContrastBox = new QCheckBox(QString::fromUtf8(ImageViewerText::autoContrast), this);
    m_autoContrastBox->setToolTip(QString::fromUtf8(autoContrastTip));
    m_autoContrastBox->setChecked(false);

    connect(zoomInButton, &QPushButton::clicked, this, &ImageViewer::zoomIn);
    connect(zoomOutButton, &QPushButton::clicked, this, &ImageViewer::zoomOut);
    connect(actualSizeButton, &QPushButton::clicked, this, &ImageViewer::actualSize);
    connect(fitButton, &QPushButton::clicked, this, &ImageViewer::fitToWindow);
    // The main window reads the event again with or without its mask.
    connect(m_showMaskBox, &QCheckBox::toggled, this, &ImageViewer::showMaskToggled);
    connect(m_autoContrastBox, &QCheckBox::toggled, this, [this](bool checked) {
        m_autoContrast = checked;
        updateDisplay();
        emit autoContrastToggled(checked);
    });

    // In a narrow panel the controls wrap onto further lines rather than cut their texts.
    auto* controls = new FlowLayout;
    controls->addWidget(zoomInButton);
    controls->addWidget(zoomOutButton);
    controls->addWidget(actualSizeButton);
    controls->addWidget(fitButton);
    controls->addWidget(m_showMaskBox);
    controls->addWidget(m_autoContrastBox);

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(m_infoLabel);
    layout->addWidget(m_scrollArea, 1);
    layout->addLayout(controls);
}

ImageViewer::~ImageViewer() = default;

void ImageViewer::setImage(
    const std::vector<std::uint8_t>& pixels, int width, int height, const QString& info)
{
    if (!holdsFrame(pixels, width, height)) {
        clearImage();
        return;
    }
    m_originalImage = frameCopy(pixels, width, height);
    m_maskImage.release();
    m_currentImage = m_originalImage.clone();
    m_infoLabel->setText(info);
    if (m_fitMode)
        fitToWindow();
    else
        updateDisplay();
}

void ImageViewer::setImageWithMask(const std::vector<std::uint8_t>& pixels,
    const std::vector<std::uint8_t>& mask, int width, int height, const QString& info)
{
    if (!holdsFrame(pixels, width, height) || !holdsFrame(mask, width, height)) {
        clearImage();
        return;
    }
    m_originalImage = frameCopy(pixels, width, height);
    m_maskImage = frameCopy(mask, width, height);
    m_currentImage = m_originalImage.clone();
    m_infoLabel->setText(info);
    if (m_fitMode)
        fitToWindow();
    else
        updateDisplay();
}

void ImageViewer::clearImage()
{
    clearImage(QString::fromUtf8(ImageViewerText::noImage));
}

void ImageViewer::clearImage(const QString& info)
{
    m_currentImage.release();
    m_originalImage.release();
    m_maskImage.release();
    m_imageLabel->clear();
    m_imageLabel->resize(0, 0);
    m_infoLabel->setText(info);
}

void ImageViewer::updateDisplay()
{
    if (m_currentImage.empty())
        return;
    cv::Mat shown = m_originalImage.empty() ? m_currentImage.clone() : m_originalImage.clone();

    // The stretch is measured on the grey values and applied to every channel alike. A flat image has
    // nothing to stretch and stays as it is.
    if (m_autoContrast) {
        cv::Mat grey;
        if (shown.channels() == 3)
            cv::cvtColor(shown, grey, cv::COLOR_BGR2GRAY);
        else
            grey = shown;
        double low = 0.0;
        double high = 0.0;
        cv::minMaxLoc(grey, &low, &high);
        if (high > low) {
            const double alpha = 255.0 / (high - low);
            shown.convertTo(shown, -1, alpha, -low * alpha);
        }
    }

    // The tint comes after the stretch, so that it looks the same whatever the image's contrast.
    if (!m_maskImage.empty()) {
        if (shown.channels() == 1)
            cv::cvtColor(shown, shown, cv::COLOR_GRAY2BGR);
        cv::Mat overlay = shown.clone();
        cv::Mat(shown.size(), shown.type(), maskTint).copyTo(overlay, m_maskImage);
        cv::addWeighted(shown, imageWeight, overlay, tintWeight, 0.0, shown);
    }

    const int width = static_cast<int>(shown.cols * m_zoomFactor);
    const int height = static_cast<int>(shown.rows * m_zoomFactor);
    cv::Mat zoomed;
    if (width >= 1 && height >= 1)
        cv::resize(shown, zoomed, cv::Size(width, height), 0.0, 0.0, cv::INTER_LINEAR);

    const QPixmap pixmap = toPixmap(zoomed);
    m_imageLabel->setPixmap(pixmap);
    m_imageLabel->resize(pixmap.size());
}

void ImageViewer::setMaskControlEnabled(bool enabled)
{
    m_showMaskBox->setEnabled(enabled);
}

bool ImageViewer::isMaskShown() const
{
    return m_showMaskBox->isChecked();
}

void ImageViewer::setZoom(double factor)
{
    m_zoomFactor = std::clamp(factor, minimumZoom, maximumZoom);
    updateDisplay();
}

void ImageViewer::zoomIn()
{
    m_fitMode = false;
    setZoom(m_zoomFactor * zoomStep);
}

void ImageViewer::zoomOut()
{
    m_fitMode = false;
    setZoom(m_zoomFactor / zoomStep);
}

void ImageViewer::actualSize()
{
    m_fitMode = false;
    setZoom(1.0);
}

// Fits once, to the viewport as it is now; resizing the widget later doesn't fit again.
void ImageViewer::fitToWindow()
{
    m_fitMode = true;
    if (!m_originalImage.empty()) {
        const QSize viewport = m_scrollArea->viewport()->size();
        m_zoomFactor = std::clamp(std::min(static_cast<double>(viewport.width()) / m_originalImage.cols,
                                      static_cast<double>(viewport.height()) / m_originalImage.rows),
            minimumZoom, maximumZoom);
    }
    updateDisplay();
}

void ImageViewer::saveImage()
{
    using namespace ImageViewerText;
    if (m_currentImage.empty()) {
        showMessage(
            QMessageBox::Warning, QString::fromUtf8(nothingToSaveTitle), QString::fromUtf8(nothingToSave));
        return;
    }
    QString selectedFilter;
    QString fileName = askSaveFileName(
        QString::fromUtf8(saveDialogTitle), QString::fromUtf8(saveFilters), &selectedFilter);
    if (fileName.isEmpty())
        return;
    fileName = withFilterSuffix(fileName, selectedFilter);

    QString failure;
    try {
        // The raw event image, not the zoomed, stretched or tinted display.
        if (!cv::imwrite(QFile::encodeName(fileName).toStdString(), m_currentImage))
            failure = QString::fromUtf8(fileNotWritten);
    } catch (const cv::Exception& e) {
        failure = QString::fromStdString(e.what());
    } catch (const std::exception& e) {
        failure = QString::fromStdString(e.what());
    }
    if (!failure.isEmpty()) {
        showMessage(QMessageBox::Critical, QString::fromUtf8(saveFailedTitle),
            QString::fromUtf8(saveFailed).arg(failure));
        return;
    }
    emit imageSaved(fileName);
    showMessage(QMessageBox::Information, QString::fromUtf8(savedTitle), QString::fromUtf8(saved));
}

void ImageViewer::contextMenuEvent(QContextMenuEvent* event)
{
    if (m_currentImage.empty()) {
        QWidget::contextMenuEvent(event);
        return;
    }
    QMenu menu(this);
    QAction* save = menu.addAction(QString::fromUtf8(ImageViewerText::saveImageAction));
    connect(save, &QAction::triggered, this, &ImageViewer::saveImage);
    execContextMenu(menu, event->globalPos());
}

QString ImageViewer::askSaveFileName(const QString& title, const QString& filters, QString* selectedFilter)
{
    return QFileDialog::getSaveFileName(this, title, QString(), filters, selectedFilter);
}

void ImageViewer::showMessage(QMessageBox::Icon icon, const QString& title, const QString& text)
{
    switch (icon) {
    case QMessageBox::Critical:
        QMessageBox::critical(this, title, text);
        break;
    case QMessageBox::Warning:
        QMessageBox::warning(this, title, text);
        break;
    default:
        QMessageBox::information(this, title, text);
        break;
    }
}

void ImageViewer::execContextMenu(QMenu& menu, const QPoint& globalPosition)
{
    menu.exec(globalPosition);
}

} // namespace Tessaly
