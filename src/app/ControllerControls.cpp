// The shared action of the tagged controls, the preferences drawer and the menu check marks.

#include "app/Controller.h"
#include "app/PrefDrawer.h"
#include "app/TextNumbers.h"
#include "browse/FolderIndex.h"

#include <QAction>
#include <QCheckBox>
#include <QComboBox>
#include <QMainWindow>
#include <QMenuBar>

void Controller::smthChanged(QObject* sender) {
    if (!sender)
        return;
    switch (sender->property("tag").toInt()) {
    case 6:
        if (auto* combo = qobject_cast<QComboBox*>(sender))
            itsPref.dpi = leadingFloatValue(combo->currentText());
        break;
    case 7:
        if (auto* combo = qobject_cast<QComboBox*>(sender))
            itsPref.exportFormat = combo->currentText();
        break;
    case 8:
        if (auto* box = qobject_cast<QCheckBox*>(sender))
            itsPref.isBatch = box->isChecked() ? 1 : 0;
        break;
    case 100:
        convert(this);
        break;
    case 101:
        selectWMF(kStepPrevious);
        break;
    case 102:
        selectWMF(kStepNext);
        break;
    default:
        break;
    }
}

void Controller::showPref(QObject*) {
    if (!itsPrefDrawer)
        return;
    const PrefDrawer::State state = itsPrefDrawer->state();
    if (state != PrefDrawer::Opening && state != PrefDrawer::Open)
        itsPrefDrawer->open();
    else
        itsPrefDrawer->close();
}

bool Controller::validateMenuItem(QAction* item) {
    if (!item)
        return true;
    if (isImageMenuItem(item))
        return imageMenuItemEnabled(item);
    if (isFileActionItem(item))
        return fileActionEnabled(item);
    if (item == itsMenuItemPref) {
        const int state = itsPrefDrawer ? itsPrefDrawer->state() : PrefDrawer::Closed;
        item->setChecked(state == PrefDrawer::Opening || state == PrefDrawer::Open);
    } else if (item == itsMenuItemMonochrome) {
        item->setChecked(m_Monochrome);
    }
    return true;
}

void Controller::validateMenuItems() {
    if (!itsMainWindow)
        return;
    for (QAction* menu : itsMainWindow->menuBar()->actions())
        if (menu->menu())
            for (QAction* item : menu->menu()->actions())
                item->setEnabled(validateMenuItem(item));
}
