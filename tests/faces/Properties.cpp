#include "faces/Properties.h"

#include <QAction>
#include <QButtonGroup>
#include <QCheckBox>
#include <QComboBox>
#include <QDialog>
#include <QDoubleSpinBox>
#include <QGroupBox>
#include <QGuiApplication>
#include <QHeaderView>
#include <QIcon>
#include <QLabel>
#include <QLayout>
#include <QLineEdit>
#include <QListView>
#include <QMainWindow>
#include <QMenu>
#include <QMenuBar>
#include <QMessageBox>
#include <QMetaProperty>
#include <QProgressBar>
#include <QPushButton>
#include <QRadioButton>
#include <QScrollArea>
#include <QScrollBar>
#include <QShortcut>
#include <QStatusBar>
#include <QTabWidget>
#include <QTableView>
#include <QTimer>
#include <QToolBar>
#include <QToolButton>
#include <QTreeWidget>

#include <functional>
#include <memory>

namespace zib {

namespace {

struct Kind
{
    const QMetaObject* meta;
    std::function<QObject*()> make; ///< A plain one; nothing for what only others derive from.
    QStringList properties;
};

template <typename T>
Kind kind(const QString& properties)
{
    return {&T::staticMetaObject, [] { return new T; }, properties.split(' ')};
}

template <typename T>
Kind abstractKind(const QString& properties)
{
    return {&T::staticMetaObject, {}, properties.split(' ')};
}

/// Every kind with the properties that it adds, the most special ones first.
const QList<Kind>& kinds()
{
    static const QList<Kind> list{
        kind<QPushButton>("autoDefault default flat"),
        kind<QToolButton>("autoRaise popupMode toolButtonStyle arrowType"),
        kind<QCheckBox>("tristate"),
        kind<QRadioButton>(QString()),
        abstractKind<QAbstractButton>("text shortcut checkable checked autoRepeat autoExclusive"),
        kind<QLabel>(
            "text textFormat alignment wordWrap margin indent openExternalLinks textInteractionFlags "
            "scaledContents"),
        kind<QLineEdit>("text maxLength readOnly placeholderText echoMode selectedText alignment inputMask "
                        "clearButtonEnabled frame modified"),
        kind<QComboBox>("editable maxVisibleItems sizeAdjustPolicy minimumContentsLength insertPolicy "
                        "currentIndex modelColumn"),
        kind<QScrollBar>(QString()),
        kind<QSlider>("tickPosition tickInterval"),
        abstractKind<QAbstractSlider>("minimum maximum value singleStep pageStep orientation tracking "
                                      "invertedAppearance invertedControls"),
        kind<QProgressBar>("minimum maximum value textVisible format orientation alignment"),
        kind<QDoubleSpinBox>("minimum maximum value singleStep decimals prefix suffix"),
        abstractKind<QAbstractSpinBox>("readOnly buttonSymbols wrapping frame alignment"),
        kind<QGroupBox>("title flat checkable checked alignment"),
        kind<QTabWidget>("currentIndex documentMode tabPosition usesScrollButtons elideMode"),
        kind<QTableView>("showGrid wordWrap cornerButtonEnabled sortingEnabled gridStyle"),
        kind<QTreeWidget>(QString()),
        abstractKind<QTreeView>(
            "rootIsDecorated uniformRowHeights itemsExpandable allColumnsShowFocus wordWrap "
            "headerHidden sortingEnabled expandsOnDoubleClick"),
        kind<QListView>(QString()),
        abstractKind<QAbstractItemView>("selectionMode selectionBehavior editTriggers alternatingRowColors "
                                        "dragEnabled dragDropMode textElideMode tabKeyNavigation autoScroll "
                                        "verticalScrollMode horizontalScrollMode"),
        kind<QScrollArea>("widgetResizable alignment"),
        abstractKind<QAbstractScrollArea>(
            "verticalScrollBarPolicy horizontalScrollBarPolicy sizeAdjustPolicy"),
        kind<QFrame>("frameShape frameShadow lineWidth midLineWidth"),
        kind<QMenu>("title tearOffEnabled toolTipsVisible"),
        kind<QMenuBar>("nativeMenuBar defaultUp"),
        kind<QToolBar>("movable floatable toolButtonStyle orientation iconSize"),
        kind<QStatusBar>("sizeGripEnabled"),
        kind<QMessageBox>("text informativeText detailedText icon textFormat standardButtons"),
        kind<QDialog>("sizeGripEnabled modal"),
        kind<QMainWindow>("animated documentMode unifiedTitleAndToolBarOnMac"),
        kind<QWidget>("minimumSize maximumSize focusPolicy contextMenuPolicy toolTip statusTip whatsThis "
                      "accessibleName accessibleDescription autoFillBackground layoutDirection windowTitle "
                      "windowModality windowModified styleSheet updatesEnabled mouseTracking"),
        kind<QAction>("text toolTip statusTip whatsThis checkable checked enabled visible autoRepeat "
                      "shortcutContext menuRole"),
        {&QShortcut::staticMetaObject, {}, QString("key context").split(' ')},
        kind<QTimer>("singleShot interval active"),
    };
    return list;
}

/// A plain one that an object is held against.
std::unique_ptr<QObject> plainLike(const QObject* object)
{
    for (const Kind& one : kinds())
        if (one.make && object->inherits(one.meta->className()))
            return std::unique_ptr<QObject>(one.make());
    return nullptr;
}

QStringList namesFor(const QObject* object)
{
    QStringList names;
    for (const Kind& one : kinds())
        if (object->inherits(one.meta->className()))
            names += one.properties;
    names.removeAll(QString());
    names.removeDuplicates();
    return names;
}

/// Whether a value only follows from another: a button's key from its caption, an action's tip from its text,
/// a window's least size from its layout.
bool isMadeByTheToolkit(const QObject* object, const QString& name, const QVariant& value)
{
    if (name == "shortcut" && object->inherits("QAbstractButton"))
        return value.value<QKeySequence>() == QKeySequence::mnemonic(object->property("text").toString());
    if (const auto* action = qobject_cast<const QAction*>(object); action && name == "toolTip") {
        const QAction plain(action->text(), nullptr);
        return plain.toolTip() == value.toString();
    }
    const auto* widget = qobject_cast<const QWidget*>(object);
    return widget && widget->isWindow() && widget->layout() && name == "minimumSize";
}

QString valueOf(const QObject* object, const QString& name)
{
    const QMetaObject* meta = object->metaObject();
    const int index = meta->indexOfProperty(name.toLatin1());
    if (index < 0)
        return {};
    const QMetaProperty property = meta->property(index);
    const QVariant value = property.read(object);
    if (isMadeByTheToolkit(object, name, value))
        return {};
    if (!property.isEnumType())
        return worded(value);
    const QByteArray keys = property.isFlagType()
                                ? property.enumerator().valueToKeys(value.toInt())
                                : QByteArray(property.enumerator().valueToKey(value.toInt()));
    return QString::fromLatin1(keys.isEmpty() ? "none" : keys);
}

QString shortcutWords(const QAction* action)
{
    QStringList keys;
    for (const QKeySequence& key : action->shortcuts())
        keys << key.toString(QKeySequence::PortableText);
    return keys.join(" or ");
}

// What no property tells of a widget

QString colorWords(const QWidget* widget)
{
    static const QList<std::pair<QPalette::ColorRole, QString>> roles{
        {QPalette::Window, "window"},
        {QPalette::WindowText, "window text"},
        {QPalette::Base, "base"},
        {QPalette::Text, "text"},
        {QPalette::Button, "button"},
        {QPalette::ButtonText, "button text"},
        {QPalette::Highlight, "highlight"},
        {QPalette::HighlightedText, "highlighted text"},
        {QPalette::PlaceholderText, "placeholder"}};
    const QPalette own = widget->palette();
    const QPalette parents =
        widget->isWindow() ? QPalette(QGuiApplication::palette()) : widget->parentWidget()->palette();
    QStringList words;
    for (const auto& [role, name] : roles)
        if (own.color(QPalette::Active, role) != parents.color(QPalette::Active, role))
            words << name + ' ' + own.color(QPalette::Active, role).name(QColor::HexArgb);
    return words.join(", ");
}

QString letterWords(const QWidget* widget)
{
    const QFont own = widget->font();
    const QFont parents =
        widget->isWindow() ? QFont(QGuiApplication::font()) : widget->parentWidget()->font();
    QStringList words;
    if (own.family() != parents.family())
        words << own.family();
    if (own.pixelSize() != parents.pixelSize())
        words << QString("%1 px").arg(own.pixelSize());
    if (own.pointSizeF() != parents.pointSizeF())
        words << QString("%1 pt").arg(own.pointSizeF());
    for (const auto& [is, was, word] : {std::tuple{own.bold(), parents.bold(), "bold"},
                                        {own.italic(), parents.italic(), "italic"},
                                        {own.underline(), parents.underline(), "underlined"}})
        if (is != was)
            words << (is ? "" : "not ") + QString(word);
    return words.join(", ");
}

QString policyWords(const QWidget* widget)
{
    const QSizePolicy own = widget->sizePolicy();
    const auto like = plainLike(widget);
    const auto* plain = qobject_cast<const QWidget*>(like.get());
    const QSizePolicy usual = plain ? plain->sizePolicy() : QSizePolicy();
    if (own == usual)
        return {};
    return QString("%1 %2, stretch %3 %4%5%6")
        .arg(own.horizontalPolicy())
        .arg(own.verticalPolicy())
        .arg(own.horizontalStretch())
        .arg(own.verticalStretch())
        .arg(own.hasHeightForWidth() ? ", height for width" : "")
        .arg(own.retainSizeWhenHidden() ? ", keeps its place" : "");
}

QString attributeWords(const QWidget* widget)
{
    static const QList<std::pair<Qt::WidgetAttribute, QString>> attributes{
        {Qt::WA_TransparentForMouseEvents, "lets clicks through"},
        {Qt::WA_DeleteOnClose, "deleted on close"},
        {Qt::WA_OpaquePaintEvent, "opaque"},
        {Qt::WA_AlwaysShowToolTips, "always tips"},
        {Qt::WA_ShowWithoutActivating, "not activated"}};
    QStringList words;
    for (const auto& [attribute, word] : attributes)
        if (widget->testAttribute(attribute))
            words << word;
    if (widget->isWindow() && !widget->testAttribute(Qt::WA_QuitOnClose))
        words << "does not end the program";
    return words.join(", ");
}

QString marginWords(const QWidget* widget)
{
    const QMargins own = widget->contentsMargins();
    QStringList words;
    if (!own.isNull() && !widget->inherits("QGroupBox") && !widget->inherits("QFrame"))
        words << QString("own %1,%2,%3,%4").arg(own.left()).arg(own.top()).arg(own.right()).arg(own.bottom());
    if (const QLayout* layout = widget->layout()) {
        const QMargins of = layout->contentsMargins();
        words << QString("%1,%2,%3,%4").arg(of.left()).arg(of.top()).arg(of.right()).arg(of.bottom());
    }
    return words == QStringList("9,9,9,9") ? QString() : words.join(", ");
}

/// Where it lies, if no layout decides that.
QString placeWords(const QWidget* widget)
{
    const QWidget* parent = widget->parentWidget();
    if (widget->isWindow() || !parent || parent->layout() || widget->objectName().isEmpty() ||
        parent->inherits("QAbstractScrollArea") || parent->inherits("QStackedWidget") ||
        parent->inherits("QStatusBar") || parent->objectName().startsWith("qt_"))
        return {};
    return QString("%1,%2 %3x%4")
        .arg(widget->x())
        .arg(widget->y())
        .arg(widget->width())
        .arg(widget->height());
}

WordPairs widgetWords(const QWidget* widget)
{
    WordPairs words{{"colors", colorWords(widget)},       {"letters", letterWords(widget)},
                    {"size policy", policyWords(widget)}, {"attributes", attributeWords(widget)},
                    {"margins", marginWords(widget)},     {"place", placeWords(widget)}};
    if (!widget->isWindow() && widget->isHidden())
        words << std::pair{"hidden", "true"};
    if (widget->testAttribute(Qt::WA_ForceDisabled))
        words << std::pair{"enabled", "false"};
    if (widget->testAttribute(Qt::WA_SetCursor))
        words << std::pair{QString("pointer"), QString::number(widget->cursor().shape())};
    if (widget->acceptDrops() && widget->isWindow()) // versions differ in what a plain main window does
        words << std::pair{"acceptDrops", "true"};
    if (const QWidget* proxy = widget->focusProxy(); proxy && !proxy->objectName().startsWith("qt_"))
        words << std::pair{QString("focus proxy"), proxy->objectName()};
    if (!widget->inherits("QLabel") && widget->backgroundRole() != QPalette::Window &&
        widget->testAttribute(Qt::WA_WState_Created) && !widget->inherits("QAbstractButton"))
        words << std::pair{QString("background role"), QString::number(widget->backgroundRole())};
    return words;
}

QString pixmapWords(const QPixmap& pixmap)
{
    const QSize size = pixmap.deviceIndependentSize().toSize();
    return pixmap.isNull() ? QString() : QString("%1x%2").arg(size.width()).arg(size.height());
}

WordPairs specialWords(const QObject* object)
{
    WordPairs words;
    if (const auto* label = qobject_cast<const QLabel*>(object)) {
        words << std::pair{QString("picture"), pixmapWords(label->pixmap())};
        if (label->buddy())
            words << std::pair{QString("buddy"), label->buddy()->objectName()};
    }
    if (const auto* action = qobject_cast<const QAction*>(object)) {
        words << std::pair{QString("shortcuts"), shortcutWords(action)};
        words << std::pair{QString("icon"), action->icon().isNull() ? QString() : QString("yes")};
        words << std::pair{QString("separator"), action->isSeparator() ? QString("true") : QString()};
        words << std::pair{QString("data"), action->data().isValid() ? worded(action->data()) : QString()};
    }
    if (const auto* button = qobject_cast<const QAbstractButton*>(object); button && !button->icon().isNull())
        words << std::pair{QString("icon"),
                           QString("%1x%2").arg(button->iconSize().width()).arg(button->iconSize().height())};
    if (const auto* shortcut = qobject_cast<const QShortcut*>(object)) {
        words << std::pair{QString("enabled"), shortcut->isEnabled() ? QString() : QString("false")};
        words << std::pair{QString("autoRepeat"), shortcut->autoRepeat() ? QString() : QString("false")};
    }
    return words;
}

} // namespace

QString worded(const QVariant& value)
{
    switch (value.typeId()) {
    case QMetaType::QString:
        return '"' + value.toString().replace('\\', "\\\\").replace('\n', "\\n") + '"';
    case QMetaType::QSize:
        return QString("%1x%2").arg(value.toSize().width()).arg(value.toSize().height());
    case QMetaType::QColor:
        return value.value<QColor>().name(QColor::HexArgb);
    case QMetaType::QKeySequence:
        return value.value<QKeySequence>().toString(QKeySequence::PortableText);
    case QMetaType::Double:
        return QString::number(value.toDouble(), 'g', 10);
    default:
        return value.toString();
    }
}

WordPairs propertyWords(QObject* object)
{
    const auto plain = plainLike(object);
    WordPairs words;
    for (const QString& name : namesFor(object)) {
        const QString value = valueOf(object, name);
        if (!plain || value != valueOf(plain.get(), name))
            words << std::pair{name, value};
    }
    words += specialWords(object);
    if (const auto* widget = qobject_cast<const QWidget*>(object))
        words += widgetWords(widget);
    return words;
}

QString windowWords(const QWidget* window)
{
    static const QList<std::pair<Qt::WindowType, QString>> hints{{Qt::FramelessWindowHint, "no frame"},
                                                                 {Qt::CustomizeWindowHint, "own hints"},
                                                                 {Qt::WindowTitleHint, "title"},
                                                                 {Qt::WindowSystemMenuHint, "menu"},
                                                                 {Qt::WindowMinimizeButtonHint, "minimize"},
                                                                 {Qt::WindowMaximizeButtonHint, "maximize"},
                                                                 {Qt::WindowCloseButtonHint, "close"},
                                                                 {Qt::WindowContextHelpButtonHint, "help"},
                                                                 {Qt::WindowStaysOnTopHint, "on top"}};
    QStringList words{window->windowType() == Qt::Dialog ? "dialog" : "window"};
    for (const auto& [hint, word] : hints)
        if (window->windowFlags() & hint)
            words << word;
    words << QString("%1x%2").arg(window->width()).arg(window->height());
    if (window->testAttribute(Qt::WA_Moved))
        words << QString("at %1,%2").arg(window->x()).arg(window->y());
    if (!window->isVisible())
        words << "closed";
    return words.join(", ");
}

} // namespace zib
