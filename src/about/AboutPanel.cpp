#include "about/AboutPanel.h"

#include "about/LinkTextView.h"
#include "about/VersionTextField.h"
#include "about/aboutView.h"

#include <cmath>

namespace {

constexpr QSize kPanelSizeWithoutPicture{504, 320};

} // namespace

AboutPanel::AboutPanel(const QRect& contentRect, Qt::WindowFlags, QWidget* parent)
    : QWidget(parent, kStyle) {
    setAttribute(Qt::WA_TranslucentBackground);
    setAttribute(Qt::WA_DeleteOnClose, false);
    setAutoFillBackground(false);
    setWindowOpacity(1.0);
    setWindowTitle(tr("About Ormidon"));
    setGeometry(contentRect);
}

AboutPanel* AboutPanel::load(QWidget* parent) {
    auto* panel = new AboutPanel(QRect(QPoint(0, 0), kPanelSizeWithoutPicture), Qt::Window, parent);
    panel->setObjectName(QStringLiteral("itsAboutWindow"));
    auto* content = new aboutView(panel);
    panel->mContent = content;
    content->awakeFromNib();
    if (!content->arrowImage().isNull())
        panel->resize(content->arrowImage().size());
    content->setGeometry(panel->rect());

    // The web address sits in the active strip, so that a click on it reaches it.
    auto* link = new LinkTextView(content);
    link->setObjectName(QStringLiteral("aboutLink"));
    link->setGeometry(panel->activeStripRect());
    link->document()->setDocumentMargin(1);
    link->awakeFromNib();
    panel->mLink = link;

    auto* version = new VersionTextField(content);
    version->setObjectName(QStringLiteral("aboutVersion"));
    const QRect strip = panel->activeStripRect();
    version->setGeometry(strip.left(), panel->height() - 64, strip.width(), 20);
    version->awakeFromNib();
    panel->mVersion = version;
    return panel;
}

QRect AboutPanel::activeStripRect() const {
    return QRect(int(kActiveStrip.x()), height() - int(kActiveStrip.y() + kActiveStrip.height()),
                 int(kActiveStrip.width()), int(kActiveStrip.height()));
}

// Pixels of the strip, as a click lands on whole pixels.
bool AboutPanel::inActiveStrip(QPointF widgetPoint) const {
    return activeStripRect().contains(
        QPoint(int(std::floor(widgetPoint.x())), int(std::floor(widgetPoint.y()))));
}
