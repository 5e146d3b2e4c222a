#pragma once

#include <QObject>
#include <QStringList>

class QToolBar;

namespace zib {

/// Captions, tool tips and button style of a toolbar. Remembers the captions and tips it finds when it is
/// made, so that they can be taken away and given back.
class ToolbarLook final : public QObject
{
    Q_OBJECT
public:
    /// @param toolbar its buttons are complete, and it outlives this object.
    explicit ToolbarLook(QToolBar* toolbar, QObject* parent = nullptr);

    void ShowToolbarText(bool on);
    void ShowToolbarTips(bool on);
    /// Flat buttons get a frame only under the pointer; the others always have one.
    void setFlat(bool on);

    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void applyTips();

    QToolBar* m_toolbar;
    QStringList m_captions;
    QStringList m_tips;
    bool m_showTips = true;
};

} // namespace zib
