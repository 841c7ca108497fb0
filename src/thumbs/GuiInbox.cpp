#include "thumbs/GuiInbox.h"

#include <QMetaObject>

void GuiInboxBase::ring() {
    // By name, with no arguments: the queued call is made and freed inside Qt.
    QMetaObject::invokeMethod(this, "empty", Qt::QueuedConnection);
}
