#pragma once

#include "common/Outcome.h"
#include "common/Services.h"
#include "components/Printer.h"

#include <QDialog>

#include <memory>

namespace Ui {
class frmCalibrate;
}

namespace zib {
struct Calibration;
}

/// Sets the default printer right for its paper: a page to measure, and the four numbers that follow from it.
/// The page is printed with the numbers shown; OK stores them in the settings file.
class frmCalibrate final : public QDialog
{
    Q_OBJECT
public:
    explicit frmCalibrate(const zib::Services& services, QWidget* parent = nullptr);
    ~frmCalibrate() override;

    /// @returns why there is nothing to set right; the detail is a sentence for the user.
    const zib::Outcome<>& loaded() const { return m_loaded; }

private:
    void connectControls();
    void Form_Load();
    void cmdTestPage_Click();
    void cmdReset_Click();
    void OKButton_Click();
    void CancelButton_Click();
    void setNumbers(const zib::Calibration& calibration);
    zib::Calibration numbers() const;
    bool store();

    std::unique_ptr<Ui::frmCalibrate> ui;
    const zib::Services m_services;
    Printer::Target m_target;
    zib::Outcome<> m_loaded;
};
