#pragma once

#include "common/GenralMacro.h"
#include "common/Services.h"
#include "settings/PageStack.h"
#include "settings/SettingsSaver.h"

#include <QDialog>

#include <memory>

class QCheckBox;
class QFrame;
class QKeyEvent;
class QLabel;
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

    /// What saves for this window, and may outlive it.
    const zib::SettingsSaver& saver() const { return *m_saver; }

signals:
    /// After every Apply and OK, when the record equals the file again.
    void applied();
    /// What an Apply or OK could not store, in words for the user; this window shows no box.
    void refused(const QString& text);

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
        QLabel* label;
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
    bool SaveOptions();
    QStringList unstorable() const;
    QList<zib::IniChange> changeOf(const Folder& folder) const;
    void keepOneLine(QLineEdit* box);
    void PickColor(QFrame* box);
    void PickFolder(QLineEdit* box);
    QList<Check> checks() const;
    QList<Folder> folders() const;
    void showColors();
    void centre();

    std::unique_ptr<Ui::frmOptions> ui;
    const zib::Services m_services;
    zib::PageStack m_pages;
    std::shared_ptr<zib::SettingsSaver> m_saver = std::make_shared<zib::SettingsSaver>();
};
