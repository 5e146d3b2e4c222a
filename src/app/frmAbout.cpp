#include "app/frmAbout.h"

#include "ui_frmAbout.h"

#include "common/Messages.h"
#include "common/Platform.h"
#include "common/Texts.h"

#include <QFileInfo>
#include <QIcon>

#include <optional>

namespace {

const QString kToolKey = QStringLiteral("SOFTWARE\\Microsoft\\Shared Tools\\MSINFO");
const QString kToolPath = QStringLiteral("PATH");
const QString kFolderKey = QStringLiteral("SOFTWARE\\Microsoft\\Shared Tools Location");
const QString kFolderName = QStringLiteral("MSINFO");
constexpr qreal kTitleSize = 1.8; // Against the window's own letters.
constexpr int kLogoSize = 96;
constexpr int kLineLetters = 50; // Of the texts that wrap.

/// @returns the system-information tool, or nothing.
std::optional<QString> systemTool()
{
    if (!zib::platform().registry)
        return std::nullopt;
    const zib::Registry& registry = *zib::platform().registry;
    if (const auto path = registry.value(kToolKey, kToolPath))
        return path;
    const auto folder = registry.value(kFolderKey, kFolderName);
    if (!folder)
        return std::nullopt;
    const QString path = *folder + QStringLiteral("\\MSINFO32.EXE");
    return QFileInfo::exists(path) ? std::optional(path) : std::nullopt;
}

} // namespace

frmAbout::frmAbout(zib::Messages& messages, QWidget* parent)
    : QDialog(parent), ui(std::make_unique<Ui::frmAbout>()), m_messages(messages)
{
    ui->setupUi(this);
    connectControls();
    Form_Load();
}

frmAbout::~frmAbout() = default;

QString frmAbout::versionText(int major, int minor, int revision)
{
    return QStringLiteral("Version %1.%2.%3").arg(major).arg(minor).arg(revision);
}

void frmAbout::connectControls()
{
    connect(ui->cmdSysInfo, &QPushButton::clicked, this, &frmAbout::cmdSysInfo_Click);
    connect(ui->cmdOK, &QPushButton::clicked, this, &frmAbout::cmdOK_Click);
}

void frmAbout::Form_Load()
{
    setWindowTitle(QStringLiteral("About ") + zib::kApplicationTitle);
    ui->lblVersion->setText(versionText(zib::kVersionMajor, zib::kVersionMinor, zib::kVersionRevision));
    ui->lblTitle->setText(zib::kApplicationTitle);
    showLook();
}

void frmAbout::cmdSysInfo_Click()
{
    const auto tool = systemTool();
    if (!tool) {
        m_messages.plain(this, QStringLiteral("System Information Is Unavailable At This Time"));
        return;
    }
    if (zib::platform().shell)
        zib::platform().shell->ShellExecuteA(QStringLiteral("open"), *tool);
}

void frmAbout::cmdOK_Click()
{
    accept();
}

void frmAbout::showLook()
{
    QFont title = font();
    title.setBold(true);
    title.setPointSizeF(title.pointSizeF() * kTitleSize);
    ui->lblTitle->setFont(title);
    for (QLabel* label : {ui->lblDescription, ui->lblLicence}) {
        const int width = fontMetrics().averageCharWidth() * kLineLetters;
        label->setMinimumSize(width, label->heightForWidth(width));
    }
    ui->imgAbout->setPixmap(QIcon(QStringLiteral(":/icons/zibcdburner.svg"))
                                .pixmap(QSize(kLogoSize, kLogoSize), devicePixelRatioF()));
}
