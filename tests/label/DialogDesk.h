#pragma once

#include "fakes/FakeSeams.h"
#include "label/LabelMaker.h"

#include <QAbstractButton>
#include <QLineEdit>
#include <QScrollBar>
#include <QSignalSpy>
#include <QTest>

#include <functional>

/// Changes the label document.
inline void edit(const std::function<void(LabelMaker::Document&)>& change)
{
    LabelMaker::Document document = LabelMaker::LabelDocument;
    change(document);
    LabelMaker::setLabelDocument(document);
}

/// One of the label dialogs on a fresh default document, its outside faked.
template <typename Dialog>
struct DialogDesk : zib::FakeDesk
{
    explicit DialogDesk(const std::function<void(LabelMaker::Document&)>& change = {})
        : dialog((prepare(change), services)), applied(&dialog, &Dialog::Applied)
    {
        dialog.show();
    }
    static void prepare(const std::function<void(LabelMaker::Document&)>& change)
    {
        zib::setApplicationFolder("/opt/zib");
        LabelMaker::InitLabelDocument({});
        if (change)
            edit(change);
    }
    template <typename Control = QWidget>
    Control* find(const QString& name) const
    {
        return dialog.template findChild<Control*>(name);
    }
    QString text(const QString& name) const { return find<QLineEdit>(name)->text(); }
    bool enabled(const QString& name) const { return find(name)->isEnabled(); }
    void click(const QString& name) const { find<QAbstractButton>(name)->click(); }
    /// Moves a bar so that its box shows @p number.
    void set(const QString& name, int number) const
    {
        auto* bar = find<QScrollBar>("vs" + name);
        bar->setValue(bar->minimum() + bar->maximum() - number);
    }

    Dialog dialog;
    QSignalSpy applied;
};
