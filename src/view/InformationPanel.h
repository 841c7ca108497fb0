#pragma once

#include <QList>
#include <QSize>
#include <QString>
#include <QThreadPool>
#include <QUrl>
#include <QWidget>

#include <cstdint>

#include "codec/PictureInformation.h"
#include "view/InformationText.h"

class QFormLayout;
class QLabel;

// The side panel of View > Information: the current picture's file, format, size, resolution,
// colour profile and camera data, one row each. It follows the picture shown; while it is
// hidden it reads nothing, so stepping through a folder costs nothing more. The file's header
// and metadata are read on a thread of the panel's own, so a slow disk or a large RAW file never
// holds the window; a reading that a newer picture has overtaken is dropped.
class InformationPanel : public QWidget {
    Q_OBJECT
public:
    explicit InformationPanel(QWidget* parent = nullptr);
    ~InformationPanel() override;

    // The picture shown now, and its size as decoded (for formats whose header won't say).
    void showPicture(const QString& path, QSize shownPixels);

    const QString& shownPath() const { return presentedPath; }
    const QList<InformationRow>& shownRows() const { return presentedRows; }
    QString valueOf(const QString& label) const; // the shown row's value; empty when left out
    QUrl mapLink() const;                        // the Location row's link; empty without one

signals:
    // The rows for `path` are on screen.
    void informationShown(const QString& path);

protected:
    void showEvent(QShowEvent* event) override;

private:
    void startReading();
    void present(const QString& path, const PictureInformation& information);
    void clearRows();

    QThreadPool reader; // one reading at a time, waited for when the panel goes
    QFormLayout* form = nullptr;
    QLabel* placeholder = nullptr;
    QString wantedPath;
    QSize wantedPixels;
    bool wantedRead = true; // the wanted picture's reading has started
    uint64_t generation = 0;
    QString presentedPath;
    QList<InformationRow> presentedRows;
};
