#pragma once

#include <QImage>
#include <QWidget>

#include <memory>

// One page image fitted into the widget on a dark ground, or a placeholder
// text where there is no page.
class PagePreview : public QWidget {
    Q_OBJECT

public:
    explicit PagePreview(QWidget* parent = nullptr);
    // Equal images (the same picture) and texts change nothing.
    void show(std::shared_ptr<const QImage> image, const QString& placeholder);
    const std::shared_ptr<const QImage>& image() const { return image_; }
    QString placeholder() const { return placeholder_; }

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    std::shared_ptr<const QImage> image_;
    QString placeholder_;
    QImage scaled_;  // the image at the widget's size, made once per change
};
