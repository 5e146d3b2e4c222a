#pragma once

#include "common/Outcome.h"
#include "common/Services.h"
#include "label/LabelItems.h"

#include <QDialog>
#include <QTimer>

#include <memory>

namespace Ui {
class frmPreview;
}

namespace zib {
class LabelSurface;
}

/// The label alone, at the size of the designer's label area; on a smaller screen it scrolls. It prints
/// itself once, a second after loading, and closes on a double-click. Ctrl+Shift+P prints the calibration
/// page and opens its dialog.
class frmPreview final : public QDialog
{
    Q_OBJECT
public:
    /// @param labelArea the designer's label area, in twips.
    /// @param standing the designer's picture, which stays when its file is no longer there.
    frmPreview(const zib::Services& services, QSize labelArea, QWidget* parent = nullptr,
               const zib::LabelImage& standing = {});
    ~frmPreview() override;

    /// @returns why the window cannot be shown; the detail is a sentence for the user.
    const zib::Outcome<>& loaded() const { return m_loaded; }

signals:
    /// The label has gone to the printer of that name.
    void Sent(const QString& printer);

protected:
    void mouseDoubleClickEvent(QMouseEvent* event) override;

private:
    QWidget* madeGround();
    QWidget* madePage(QSize label);
    void connectControls();
    void Form_Load();
    void Form_DblClick();
    void Timer1_Timer();
    void Calibrate_Click();
    void tell(const zib::Outcome<QString>& sent);

    std::unique_ptr<Ui::frmPreview> ui;
    const zib::Services m_services;
    const QSize m_labelArea; ///< Twips.
    std::unique_ptr<zib::LabelSurface> m_surface;
    QTimer m_timer{this};
    zib::Outcome<> m_loaded;
};
