#pragma once

#include "common/GenralMacro.h"
#include "common/Services.h"
#include "settings/PageStack.h"

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
    /// A check box and the setting it stands for.
    struct Check
    {
        QString section;
        QString key;
        QCheckBox* box;
        bool OptionsData::*field;
    };
    /// A folder's text box and the setting it stands for.
    struct Folder
    {
        QString key;
        QLineEdit* box;
        QString OptionsData::*field;
    };

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
    QList<Check> checks() const;
    QList<Folder> folders() const;
    void showColors();
    void centre();

    std::unique_ptr<Ui::frmOptions> ui;
    zib::Services m_services;
    zib::PageStack m_pages;
};
