#pragma once

// The link text view of the scrolling links text: blue links, and as tall as its document, so
// that the scroll area around it does the scrolling.

#include "about/LinkTextView.h"

class LinkRunTextView : public LinkTextView {
    Q_OBJECT
public:
    static QCursor fingerCursor();
    static const QString http;
    static const QString maimURL;

    explicit LinkRunTextView(QWidget* parent = nullptr);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    QColor linkColour() const override; // blue
    QCursor classFingerCursor() const override { return fingerCursor(); }
    QString hostString() const override { return maimURL; }
    QString prefixString() const override { return http; }

private:
    int documentHeight() const;
};
