#pragma once

#include "common/GenralMacro.h"
#include "common/Platform.h"
#include "common/Services.h"

#include <QDialog>

#include <memory>

class QCheckBox;
class QFrame;
class QKeyEvent;
class QLineEdit;

namespace Ui {
class frmOptions;
}

/// The options dialog: four pages of controls that stand for the settings. The record and the file change
/// only when the user applies.
class frmOptions final : public QDialog
{
    Q_OBJECT
public:
    explicit frmOptions(const zib::Services& services, QWidget* parent = nullptr);
    ~frmOptions() override;

signals:
    /// After every Apply and OK, when the record equals the file again.
    void applied();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    void connectControls();
    void Form_Load();
    bool Form_KeyDown(const QKeyEvent& event);
    void tbsOptions_Click();
    void chk3D_Click();
    void chkFlat_Click();
    void cmdChangeBack_Click();
    void cmdChangeText_Click();
    void cmdWAVInput_Click();
    void cmdWAVOutput_Click();
    void cmdMP3Input_Click();
    void cmdTemp_Click();
    void cmdDefault_Click();
    void cmdOK_Click();
    void cmdCancel_Click();
    void cmdApply_Click();

    void FillOptionControls();
    void SaveOptions();
    void PickColor(QFrame* box);
    void PickFolder(QLineEdit* box);
    QList<zib::IniChange> waveChanges() const;
    QList<zib::IniChange> folderChanges() const;
    QList<zib::IniChange> viewChanges() const;
    QList<zib::IniChange> miscChanges() const;
    void showColors();
    void fitPages();
    void placePages();
    void centre();
    QList<QWidget*> pages() const;

    std::unique_ptr<Ui::frmOptions> ui;
    zib::Services m_services;
};
