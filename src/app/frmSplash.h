#pragma once

#include <QDialog>
#include <QTimer>

#include <memory>

namespace Ui {
class frmSplash;
}

/// The splash window: the picture, for three seconds or until a click or a key.
class frmSplash final : public QDialog
{
    Q_OBJECT
public:
    explicit frmSplash(QWidget* parent = nullptr);
    ~frmSplash() override;

protected:
    void showEvent(QShowEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;

private:
    void connectControls();
    void Form_Load();
    void Form_Click();
    void Form_KeyDown();
    void Timer1_Timer();

    std::unique_ptr<Ui::frmSplash> ui;
    QTimer m_timer{this};
};
