#pragma once

class QCoreApplication;

// Loads the translations for the user's locale into `app`: Qt's own (the standard buttons and
// dialogs, qtbase_*.qm from Qt's translations folder) and Ormidon's (compiled in under
// :/i18n). An English locale, or one without a translation, keeps the texts as written.
void installTranslations(QCoreApplication* app);
