#include "app/frmMain.h"

#include "ui_frmMain.h"

#include "app/ToolbarLook.h"
#include "common/Colors.h"
#include "common/GenralMacro.h"
#include "common/Texts.h"

#include <QAction>
#include <QDateTime>
#include <QLocale>
#include <QMouseEvent>

#include <array>

// The main window's look: the View menu, the view settings, the status bar.

namespace {

constexpr std::array<int, 6> kPanelTwips{3598, 2540, 3950, 2822, 1834, 1482};

/// The number behind the last "_" of a control's name.
int indexOf(const QAction* item)
{
    return item->objectName().section(u'_', -1).toInt();
}

} // namespace

void frmMain::RefreshMain()
{
    ui->mnuViewSub_1->setChecked(gOptions.ShowToolBar);
    ui->mnuViewSub_2->setChecked(gOptions.ToolbarStyleFlat);
    ui->mnuViewSub_3->setChecked(!gOptions.ToolbarStyleFlat);
    ui->mnuViewSub_4->setChecked(gOptions.ShowTipsOnToolbar); // Captions follow the setting of the tips.
    ui->mnuViewSub_5->setChecked(gOptions.ShowTipsOnToolbar);
    ui->mnuViewSub_7->setChecked(gOptions.ShowStatusbar);
    ui->mnuViewSub_9->setChecked(gOptions.ShowGridLines);

    showToolbar(ui->mnuViewSub_1->isChecked());
    m_look->ShowToolbarText(ui->mnuViewSub_4->isChecked());
    m_look->ShowToolbarTips(ui->mnuViewSub_5->isChecked());
    ui->StatusBar1->setVisible(ui->mnuViewSub_7->isChecked());
    ui->ListView1->setShowGrid(ui->mnuViewSub_9->isChecked());
    QPalette colors;
    colors.setColor(QPalette::Base, zib::colorFromNumber(gOptions.GridBackColor));
    colors.setColor(QPalette::Text, zib::colorFromNumber(gOptions.GridTextColor));
    ui->ListView1->setPalette(colors);
    m_look->setFlat(ui->mnuViewSub_2->isChecked());
}

void frmMain::mnuViewSub_Click(const QAction* item)
{
    const bool on = item->isChecked(); // The menu has inverted it already.
    switch (indexOf(item)) {
    case 1:
        showToolbar(on);
        break;
    case 2:
        ui->mnuViewSub_3->setChecked(!on);
        break;
    case 3:
        ui->mnuViewSub_2->setChecked(!on);
        break;
    case 4:
        m_look->ShowToolbarText(on);
        break;
    case 5:
        m_look->ShowToolbarTips(on);
        break;
    case 7:
        ui->StatusBar1->setVisible(on);
        break;
    case 9:
        ui->ListView1->setShowGrid(on);
        break;
    default:
        break;
    }
    m_look->setFlat(ui->mnuViewSub_2->isChecked());
}

void frmMain::showToolbar(bool on)
{
    ui->Toolbar1->setVisible(on);
    for (QAction* item : {ui->mnuViewSub_2, ui->mnuViewSub_3, ui->mnuViewSub_4, ui->mnuViewSub_5})
        item->setEnabled(on);
}

// Status bar

void frmMain::setUpStatusbar()
{
    const std::array<QLabel*, 6> panels{ui->StatusBar1_1, ui->StatusBar1_2, ui->StatusBar1_3,
                                        ui->StatusBar1_4, ui->StatusBar1_5, ui->StatusBar1_6};
    for (size_t i = 0; i < panels.size(); ++i)
        ui->StatusBar1->addWidget(panels.at(i), kPanelTwips.at(i));
    setPanel(ui->StatusBar1_4, zib::kHomePage);
    ui->StatusBar1_4->installEventFilter(this);
    ui->lblProgress->hide();
}

/// A click on the panel of the address opens the help.
bool frmMain::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == ui->StatusBar1_4 && event->type() == QEvent::MouseButtonRelease &&
        static_cast<QMouseEvent*>(event)->button() == Qt::LeftButton)
        run(&frmMain::showHelp);
    return QMainWindow::eventFilter(watched, event);
}

void frmMain::setPanel(QLabel* panel, const QString& text)
{
    panel->setText(text);
    panel->setToolTip(text);
}

/// Says what is waited for: in the status bar, or below the list while that is hidden. An empty text ends it.
void frmMain::showProgress(const QString& text)
{
    ui->StatusBar1->showMessage(text);
    ui->lblProgress->setText(text);
    ui->lblProgress->setVisible(!text.isEmpty() && ui->StatusBar1->isHidden());
}

/// Date and time of the system; wakes at the next full minute.
void frmMain::showClock()
{
    const QDateTime now = QDateTime::currentDateTime();
    ui->StatusBar1_5->setText(QLocale().toString(now.date(), QLocale::ShortFormat));
    QString format = QLocale().timeFormat(QLocale::ShortFormat);
    ui->StatusBar1_6->setText(QLocale().toString(now.time(), format.remove(QStringLiteral(":ss"))));
    m_clock.start(std::chrono::minutes(1) -
                  std::chrono::milliseconds(now.time().msecsSinceStartOfDay() % 60000));
}
