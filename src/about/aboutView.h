#pragma once

// The about panel's content: the "splash" picture over a clear background, with a soft shadow
// worked out from the picture's own transparency. The window takes the picture's shape.

#include <QImage>
#include <QWidget>

class aboutView : public QWidget {
    Q_OBJECT
public:
    explicit aboutView(QWidget* parent = nullptr);

    void awakeFromNib(); // loads the "splash" picture and shapes the window after it

    // The shared "splash" picture; null when the program has none.
    const QImage& arrowImage() const { return mArrowImage; }
    // The shadow under the picture: black, blurred, a few pixels lower.
    const QImage& shadowImage() const { return mShadow; }
    // Where the window shows: the picture and the darker part of its shadow.
    QRegion windowShape() const;

    static constexpr int kShadowOffset = 4;
    static constexpr int kShadowBlur = 5;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    void updateShadow();

    QImage mArrowImage;
    QImage mShadow;
};
