#include "view/InformationPanel.h"

#include <QDesktopServices>
#include <QFormLayout>
#include <QLabel>
#include <QVBoxLayout>

InformationPanel::InformationPanel(QWidget* parent) : QWidget(parent) {
    reader.setMaxThreadCount(1);
    auto* column = new QVBoxLayout(this);
    placeholder = new QLabel(tr("No picture"), this);
    placeholder->setObjectName("itsInformationPlaceholder");
    placeholder->setEnabled(false);
    column->addWidget(placeholder);
    form = new QFormLayout;
    form->setLabelAlignment(Qt::AlignRight | Qt::AlignTop);
    form->setFieldGrowthPolicy(QFormLayout::AllNonFixedFieldsGrow);
    form->setRowWrapPolicy(QFormLayout::DontWrapRows);
    column->addLayout(form);
    column->addStretch(1);
    setMinimumWidth(220);
}

InformationPanel::~InformationPanel() {
    ++generation;
    reader.clear();
    reader.waitForDone(); // its answer, queued to a panel that is gone, is dropped by Qt
}

void InformationPanel::showPicture(const QString& path, QSize shownPixels) {
    wantedPath = path;
    wantedPixels = shownPixels;
    wantedRead = false;
    if (isVisible())
        startReading();
}

void InformationPanel::showEvent(QShowEvent* event) {
    QWidget::showEvent(event);
    if (!wantedRead)
        startReading();
}

void InformationPanel::startReading() {
    wantedRead = true;
    const uint64_t asked = ++generation;
    const QString path = wantedPath;
    if (path.isEmpty()) {
        present(path, PictureInformation{});
        return;
    }
    reader.clear(); // a reading not yet started for an older picture is not needed
    // The panel outlives the reading (its destructor waits), and Qt drops the queued answer
    // of a panel that is gone.
    reader.start([this, asked, path] {
        const PictureInformation information = readPictureInformation(path);
        QMetaObject::invokeMethod(
            this,
            [this, asked, path, information] {
                if (generation == asked)
                    present(path, information);
            },
            Qt::QueuedConnection);
    });
}

void InformationPanel::clearRows() {
    while (form->rowCount() > 0)
        form->removeRow(0);
}

void InformationPanel::present(const QString& path, const PictureInformation& information) {
    clearRows();
    presentedPath = path;
    presentedRows = path.isEmpty() ? QList<InformationRow>()
                                   : InformationText::rows(path, information, wantedPixels);
    placeholder->setVisible(presentedRows.isEmpty());
    for (const InformationRow& row : presentedRows) {
        auto* value = new QLabel(this);
        value->setWordWrap(true);
        if (row.link.isValid()) {
            value->setTextFormat(Qt::RichText);
            value->setText(QStringLiteral("<a href=\"%1\">%2</a>")
                               .arg(row.link.toString(QUrl::FullyEncoded).toHtmlEscaped(),
                                    row.value.toHtmlEscaped()));
            value->setToolTip(tr("Open the place on a map in the web browser"));
            value->setTextInteractionFlags(Qt::TextBrowserInteraction);
            connect(value, &QLabel::linkActivated, this,
                    [](const QString& link) { QDesktopServices::openUrl(QUrl(link)); });
        } else {
            value->setTextFormat(Qt::PlainText);
            value->setText(row.value);
            value->setTextInteractionFlags(Qt::TextSelectableByMouse);
        }
        value->setObjectName(QStringLiteral("info:") + row.label);
        auto* label = new QLabel(tr("%1:").arg(row.label), this);
        label->setEnabled(true);
        form->addRow(label, value);
    }
    emit informationShown(path);
}

QString InformationPanel::valueOf(const QString& label) const {
    for (const InformationRow& row : presentedRows)
        if (row.label == label)
            return row.value;
    return {};
}

QUrl InformationPanel::mapLink() const {
    for (const InformationRow& row : presentedRows)
        if (row.link.isValid())
            return row.link;
    return {};
}
