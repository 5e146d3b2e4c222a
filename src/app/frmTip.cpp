#include "app/frmTip.h"

#include "ui_frmTip.h"

#include "common/GeneralAPI.h"
#include "common/GenralMacro.h"

#include <QDateTime>
#include <QIcon>

namespace {

const QString kTipsFile = QStringLiteral("TIPOFDAY.TXT");
constexpr qreal kHeadingSize = 1.35; // Against the window's own letters.
constexpr int kLampSize = 48;
constexpr int kWindowLetters = 72; // Of the window, so that it grows with its letters.
constexpr int kLines = 15;
constexpr qsizetype kMostLetters = 4000; // Laying out a line of millions takes minutes.

/// The beginning of a tip that is too long to be read in a window.
QString shown(const QString& tip)
{
    if (tip.size() <= kMostLetters)
        return tip;
    return tip.left(tip[kMostLetters - 1].isHighSurrogate() ? kMostLetters - 1 : kMostLetters) +
           QChar(0x2026);
}

} // namespace

frmTip::frmTip(QWidget* parent)
    : QDialog(parent), ui(std::make_unique<Ui::frmTip>()),
      m_tips(static_cast<quint32>(QDateTime::currentMSecsSinceEpoch()))
{
    ui->setupUi(this);
    connectControls();
    Form_Load();
}

frmTip::~frmTip() = default;

void frmTip::connectControls()
{
    connect(ui->chkLoadTipsAtStartup, &QCheckBox::clicked, this, &frmTip::chkLoadTipsAtStartup_Click);
    connect(ui->cmdNextTip, &QPushButton::clicked, this, &frmTip::cmdNextTip_Click);
    connect(ui->cmdOK, &QPushButton::clicked, this, &frmTip::cmdOK_Click);
}

void frmTip::Form_Load()
{
    showLook();
    GeneralAPI::SetCheckValue(ui->chkLoadTipsAtStartup, gOptions.ShowTipsOfDay);
    if (!loadTips(GeneralAPI::JoinPath(zib::applicationFolder(), kTipsFile)))
        ui->lblTipText->setText(QStringLiteral("That the ") + kTipsFile +
                                QStringLiteral(" file was not found? ") + QStringLiteral("\n\n") +
                                QStringLiteral("Create a text file named ") + kTipsFile +
                                QStringLiteral(" using NotePad with 1 tip per line. ") +
                                QStringLiteral("Then place it in the same directory as the application. "));
}

void frmTip::chkLoadTipsAtStartup_Click()
{
    OptionsData options = gOptions;
    options.ShowTipsOfDay = GeneralAPI::IsChecked(ui->chkLoadTipsAtStartup);
    GeneralAPI::WriteIniStringLater(QStringLiteral("View"), QStringLiteral("Show Tips Of Day"),
                                    options.ShowTipsOfDay ? QStringLiteral("True") : QStringLiteral("False"),
                                    gSettingsFile);
    zib::setOptions(options);
}

void frmTip::cmdNextTip_Click()
{
    if (const auto tip = m_tips.any())
        ui->lblTipText->setText(shown(*tip));
}

void frmTip::cmdOK_Click()
{
    accept();
}

bool frmTip::loadTips(const QString& path)
{
    if (!m_tips.load(path))
        return false;
    cmdNextTip_Click();
    return true;
}

/// The panel has the colours of a page, the heading letters of its own size.
void frmTip::showLook()
{
    for (QWidget* part : {static_cast<QWidget*>(ui->fraTip), ui->scrTip->viewport()}) {
        part->setBackgroundRole(QPalette::Base);
        part->setForegroundRole(QPalette::Text);
    }
    ui->scrTipContents->setBackgroundRole(QPalette::Base);
    ui->lblHeading->setForegroundRole(QPalette::Text);
    ui->lblTipText->setForegroundRole(QPalette::Text);
    resize(fontMetrics().averageCharWidth() * kWindowLetters, fontMetrics().lineSpacing() * kLines);
    QFont heading = font();
    heading.setBold(true);
    heading.setPointSizeF(heading.pointSizeF() * kHeadingSize);
    ui->lblHeading->setFont(heading);
    ui->imgTip->setPixmap(QIcon(QStringLiteral(":/icons/zibcdburner.svg"))
                              .pixmap(QSize(kLampSize, kLampSize), devicePixelRatioF()));
}

void frmTip::changeEvent(QEvent* event)
{
    QDialog::changeEvent(event);
    if (event->type() == QEvent::FontChange)
        showLook();
}
