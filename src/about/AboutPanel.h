#pragma once

// The about panel: a borderless, translucent window whose only picture is the "splash"
// picture, shaped by that picture's own transparency and shadowed. It shows at launch as a
// splash and again from Help > About (see Controller::runAbout).

#include <QPointF>
#include <QRect>
#include <QWidget>

class aboutView;
class LinkTextView;
class VersionTextField;

class AboutPanel : public QWidget {
    Q_OBJECT
public:
    // The content rectangle is kept, but the panel is always a borderless splash window,
    // whatever style the caller asked for.
    AboutPanel(const QRect& contentRect, Qt::WindowFlags requestedStyle, QWidget* parent = nullptr);

    // The panel as the program shows it: the picture, the web address in the active strip and
    // the version under it.
    static AboutPanel* load(QWidget* parent);

    static constexpr Qt::WindowFlags kStyle =
        Qt::SplashScreen | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint;

    // Clicks inside this strip are handed to the panel; anywhere else they close it. Window
    // coordinates with the origin at the lower left, as the picture was drawn for.
    static constexpr QRectF kActiveStrip{141, 185, 221, 20};
    // The same strip in the widget's own coordinates (origin at the top left).
    QRect activeStripRect() const;
    bool inActiveStrip(QPointF widgetPoint) const;

    bool canBecomeKeyWindow() const { return true; }

    aboutView* contentView() const { return mContent; }
    VersionTextField* versionField() const { return mVersion; }
    LinkTextView* linkView() const { return mLink; }

    QPointF initialLocation; // kept for a dragged panel; nothing moves it yet

private:
    aboutView* mContent = nullptr;
    VersionTextField* mVersion = nullptr;
    LinkTextView* mLink = nullptr;
};
