#include "app/Controller.h"
#include "app/TextNumbers.h"
#include "view/wmfImageView.h"

#include <QLineEdit>
#include <QSlider>
#include <QVariant>

namespace {

constexpr int kRotationFieldTag = 103;

} // namespace

bool Controller::getPictRect(Rect* rect) const {
    if (itsCGImage.isNull() || !rect)
        return false;
    *rect = itsImgBounds;
    return true;
}

void Controller::slideRotate(QObject* sender) {
    auto* slider = qobject_cast<QAbstractSlider*>(sender);
    if (!slider)
        slider = itsRotateSlider.data();
    if (!slider)
        return;
    m_rotate = slider->value();
    if (itsRotateText)
        itsRotateText->setText(QString::number(m_rotate));
    if (itsWmfView)
        itsWmfView->update();
}

void Controller::controlTextDidEndEditing(QObject* object) {
    if (!object || object->property("tag").toInt() != kRotationFieldTag)
        return;
    const auto* field = qobject_cast<QLineEdit*>(object);
    const QString text = field ? field->text() : object->property("text").toString();
    // The slider stays where it was: moving it later overwrites the typed angle.
    m_rotate = leadingIntValue(text);
    if (itsWmfView)
        itsWmfView->update();
}

void Controller::monohrome(QObject* /*sender*/) {
    m_Monochrome = !m_Monochrome;
    if (itsWmfView)
        itsWmfView->update();
}
