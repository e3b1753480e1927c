#pragma once

#include <QImage>
#include <QWidget>

#include <memory>

// Shows one slide image centred on black, as large as it fits.
class SlideView : public QWidget {
public:
    explicit SlideView(QWidget* parent = nullptr);
    void setImage(std::shared_ptr<const QImage> image);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    std::shared_ptr<const QImage> image_;
};
