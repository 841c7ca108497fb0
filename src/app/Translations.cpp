#include "app/Translations.h"

#include <QCoreApplication>
#include <QLibraryInfo>
#include <QLocale>
#include <QTranslator>

void installTranslations(QCoreApplication* app) {
    const QLocale locale;
    auto* qtTexts = new QTranslator(app);
    if (qtTexts->load(locale, QStringLiteral("qtbase"), QStringLiteral("_"),
                      QLibraryInfo::path(QLibraryInfo::TranslationsPath)))
        QCoreApplication::installTranslator(qtTexts);
    auto* ownTexts = new QTranslator(app);
    if (ownTexts->load(locale, QStringLiteral("ormidon"), QStringLiteral("_"),
                       QStringLiteral(":/i18n")))
        QCoreApplication::installTranslator(ownTexts);
}
