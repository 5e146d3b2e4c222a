#include "platform/DesktopFolderPicker.h"

#include "platform/FileBox.h"

namespace zib {

QString DesktopFolderPicker::SHBrowseForFolderA(QWidget* owner, const QString& title, const QString& start)
{
    FileBox box(owner, title, start.isEmpty() ? m_lastFolder : start);
    box.setFileMode(QFileDialog::Directory);
    box.setOption(QFileDialog::ShowDirsOnly);
    if (box.exec() != QDialog::Accepted || box.chosen().isEmpty())
        return {};
    m_lastFolder = box.chosen().first();
    const bool loses = !m_lastFolder.isEmpty() && m_lastFolder.back().isSpace(); // When it is trimmed.
    return loses ? m_lastFolder + u'/' : m_lastFolder;
}

} // namespace zib
