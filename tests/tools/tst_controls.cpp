#include "tools/Stage.h"

#include "fakes/FakeCDRipperX.h"
#include "tools/frmMP3ToWAV.h"
#include "tools/frmPlay.h"
#include "tools/frmPlayer.h"
#include "tools/frmRip.h"

#include <QAbstractItemView>
#include <QComboBox>
#include <QLineEdit>
#include <QProgressBar>
#include <QSlider>

namespace {

using Maker = std::unique_ptr<QDialog> (*)(const zib::Services&);

template <typename Window>
std::unique_ptr<QDialog> make(const zib::Services& services)
{
    return std::make_unique<Window>(services);
}

/// The controls that a user meets, those that the toolkit makes for itself left out.
QList<QWidget*> controlsOf(const QDialog& window)
{
    QList<QWidget*> controls;
    for (auto* widget : window.findChildren<QWidget*>()) {
        const bool counts = qobject_cast<QAbstractButton*>(widget) || qobject_cast<QComboBox*>(widget) ||
                            qobject_cast<QLineEdit*>(widget) || qobject_cast<QProgressBar*>(widget) ||
                            qobject_cast<QSlider*>(widget) || qobject_cast<QAbstractItemView*>(widget);
        const QString name = widget->objectName();
        if (counts && !name.isEmpty() && !name.startsWith("qt_"))
            controls << widget;
    }
    return controls;
}

} // namespace

Q_DECLARE_METATYPE(Maker)

/// What the tool windows say about their controls, to the eye and to a screen reader.
class TestControls : public QObject
{
    Q_OBJECT
private slots:
    void everyControl_isNamedAndExplained_data()
    {
        QTest::addColumn<Maker>("maker");
        QTest::addColumn<int>("controls");
        QTest::newRow("frmRip") << Maker(make<frmRip>) << 10;
        QTest::newRow("frmMP3ToWAV") << Maker(make<frmMP3ToWAV>) << 8;
        QTest::newRow("frmPlay") << Maker(make<frmPlay>) << 10;
        QTest::newRow("frmPlayer") << Maker(make<frmPlayer>) << 14;
    }
    void everyControl_isNamedAndExplained()
    {
        QFETCH(Maker, maker);
        zib::Stage stage;
        stage.desk.components.makeRipper = [] { return std::make_unique<zib::FakeCDRipperX>(); };
        const auto window = maker(stage.desk.services);
        const QList<QWidget*> controls = controlsOf(*window);
        QTEST(int(controls.size()), "controls");
        QStringList tips;
        for (const QWidget* control : controls) {
            const QString tip = control->toolTip();
            const QByteArray name = control->objectName().toLatin1();
            QVERIFY2(!tip.isEmpty() && tip[0].isUpper() && !tip.endsWith('.'), name.constData());
            QVERIFY2(!control->accessibleName().isEmpty() && !control->accessibleName().contains('&'),
                     name.constData());
            QVERIFY2(!tips.contains(tip), name.constData());
            tips << tip;
        }
    }
};

QTEST_MAIN(TestControls)
#include "tst_controls.moc"
