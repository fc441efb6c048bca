#include "ConnectDialogPage.h"
#include "FormFields.h"
#include "ServerListDelegate.h"
#include "StoredServers.h"
#include "StyleSheetReader.h"
#include "TemporaryStore.h"
#include "Waiting.h"

#include <QFormLayout>
#include <QLabel>
#include <QMetaMethod>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

/// Records the dialog's style sheet whenever the current row of its list changes.
class SheetRecorder final : public QObject
{
public:
    bool eventFilter(QObject *watched, QEvent *event) override
    {
        auto *list = qobject_cast<QListWidget *>(watched);
        if (list != nullptr && event->type() == QEvent::ParentChange) {
            disconnect(list, nullptr, this, nullptr);
            connect(list, &QListWidget::currentItemChanged, this,
                    [this, list] { sheets.append(list->window()->styleSheet()); });
        }
        return QObject::eventFilter(watched, event);
    }

    QStringList sheets;
};

} // namespace

class TestConnectDialog final : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void hasItsRowsInOrder();
    void hasPlaceholders_data();
    void hasPlaceholders();
    void laysOutTheForm();
    void laysOutTheList();
    void laysOutTheButtons();
    void hasAFixedSize();
    void declaresItsSlotsInOrder();
    void appliesTheThemesColors_data();
    void appliesTheThemesColors();
    void setsTheSheetOnlyForAnotherTheme();
    void keepsFixedValuesInEveryTheme_data();
    void keepsFixedValuesInEveryTheme();
    void appliesTheThemeAfterTheSettings();
    void isTranslucentOnlyForGlass_data();
    void isTranslucentOnlyForGlass();
    void paintsSelectedRowsInTheThemesColor();
    void isUsableByKeyboard();
    void connectsOnReturn_data();
    void connectsOnReturn();
    void rejectsOnEscape();

private:
    TemporaryStore store;
};

void TestConnectDialog::init()
{
    store.clear();
    // The offscreen platform logs this when a window is raised.
    QTest::failOnWarning(QRegularExpression(u"^(?!This plugin does not support)"_s));
}

void TestConnectDialog::hasItsRowsInOrder()
{
    const ConnectDialogPage page;
    QCOMPARE(page.dialog.windowTitle(), u"Connect to IRC Server"_s);
    QCOMPARE(FormFields::labels(&page.dialog),
             (QStringList{u"Server:"_s, u"Port:"_s, u""_s, u"Nickname:"_s, u"Real name:"_s,
                          u"Join channels:"_s}));
    QCOMPARE(page.dialog.findChild<QLabel *>(u"titleLabel"_s)->text(), u"Connect to IRC"_s);
    QCOMPARE(page.ssl->text(), u"Use SSL"_s);
    QCOMPARE(page.dialog.findChildren<QLineEdit *>().size(), 5);
}

void TestConnectDialog::hasPlaceholders_data()
{
    QTest::addColumn<QString>("label");
    QTest::addColumn<QString>("placeholder");

    QTest::newRow("port") << u"Port:"_s << u"6667"_s;
    QTest::newRow("nick") << u"Nickname:"_s << u"Type you nickname"_s;
    QTest::newRow("real name") << u"Real name:"_s << u"Type you Real name (optionally)"_s;
    QTest::newRow("channels") << u"Join channels:"_s << u"#linux, #help"_s;
}

void TestConnectDialog::hasPlaceholders()
{
    QFETCH(const QString, label);
    const ConnectDialogPage page;
    QTEST(FormFields::field<QLineEdit>(&page.dialog, label)->placeholderText(), "placeholder");
    QVERIFY(page.server->placeholderText().contains(u'.'));
}

void TestConnectDialog::laysOutTheForm()
{
    const ConnectDialogPage page;
    const auto *layout = qobject_cast<QVBoxLayout *>(page.dialog.layout());
    QVERIFY(layout != nullptr);
    QCOMPARE(layout->contentsMargins(), QMargins(28, 28, 28, 20));
    QCOMPARE(layout->spacing(), 18);
    QCOMPARE(layout->count(), 4);
    QCOMPARE(layout->itemAt(0)->widget()->objectName(), u"titleLabel"_s);
    QCOMPARE(layout->itemAt(2)->widget(), page.ssl);

    const QFormLayout *form = FormFields::formOf(&page.dialog);
    QCOMPARE(layout->itemAt(1)->layout(), form);
    QCOMPARE(form->labelAlignment(), Qt::AlignLeft | Qt::AlignVCenter);
    QCOMPARE(form->formAlignment(), Qt::AlignLeft | Qt::AlignTop);
    QCOMPARE(form->fieldGrowthPolicy(), QFormLayout::ExpandingFieldsGrow);
    QCOMPARE(form->spacing(), 12);
    QCOMPARE(page.port->minimumWidth(), 80);
    QCOMPARE(page.port->maximumWidth(), 80);
}

void TestConnectDialog::laysOutTheList()
{
    const ConnectDialogPage page;
    const QFormLayout *form = FormFields::formOf(&page.dialog);
    QCOMPARE(form->itemAt(2, QFormLayout::FieldRole)->widget(), page.list);
    QVERIFY(page.list->alternatingRowColors());
    QCOMPARE(page.list->minimumHeight(), 120);
    QCOMPARE(page.list->maximumHeight(), 150);
    QCOMPARE(page.list->contextMenuPolicy(), Qt::CustomContextMenu);
    QVERIFY(qobject_cast<ServerListDelegate *>(page.list->itemDelegate()) != nullptr);
    QCOMPARE(page.list->itemDelegate()->parent(), &page.dialog);

    const QWidget *column = form->itemAt(2, QFormLayout::LabelRole)->widget();
    QCOMPARE(column->metaObject(), &QWidget::staticMetaObject);
    const auto *layout = qobject_cast<QVBoxLayout *>(column->layout());
    QVERIFY(layout != nullptr);
    QCOMPARE(layout->contentsMargins(), QMargins());
    QCOMPARE(layout->spacing(), 4);
    QCOMPARE(layout->count(), 4);
    QCOMPARE(layout->itemAt(0)->widget(), page.button(u"addButton"_s));
    QCOMPARE(layout->itemAt(1)->widget(), page.button(u"editButton"_s));
    QCOMPARE(layout->itemAt(2)->widget(), page.button(u"deleteButton"_s));
    QVERIFY(layout->itemAt(3)->spacerItem() != nullptr);
    QCOMPARE(page.button(u"addButton"_s)->text(), u"Add"_s);
    QCOMPARE(page.button(u"editButton"_s)->text(), u"Edit"_s);
    QCOMPARE(page.button(u"deleteButton"_s)->text(), u"Delete"_s);
}

void TestConnectDialog::laysOutTheButtons()
{
    const ConnectDialogPage page;
    const auto *row = qobject_cast<QHBoxLayout *>(page.dialog.layout()->itemAt(3)->layout());
    QVERIFY(row != nullptr);
    QCOMPARE(row->count(), 3);
    QVERIFY(row->itemAt(0)->spacerItem() != nullptr);
    QCOMPARE(row->itemAt(1)->widget(), page.button(u"cancelButton"_s));
    QCOMPARE(row->itemAt(2)->widget(), page.button(u"connectButton"_s));
    QCOMPARE(page.button(u"cancelButton"_s)->text(), u"Cancel"_s);
    QCOMPARE(page.button(u"connectButton"_s)->text(), u"Connect"_s);
    QVERIFY(page.button(u"connectButton"_s)->isDefault());
}

void TestConnectDialog::hasAFixedSize()
{
    const ConnectDialogPage page;
    QCOMPARE(page.dialog.minimumSize(), page.dialog.size());
    QCOMPARE(page.dialog.maximumSize(), page.dialog.size());
    QVERIFY(page.dialog.width() >= 460);
    QVERIFY(page.dialog.width() <= 560);
    QVERIFY(page.dialog.height() >= page.dialog.minimumSizeHint().height());
    const Qt::WindowFlags flags = page.dialog.windowFlags();
    QCOMPARE(flags & Qt::WindowType_Mask, Qt::Dialog);
    QVERIFY(flags.testFlag(Qt::MSWindowsFixedSizeDialogHint));
    QVERIFY(!flags.testFlag(Qt::WindowMaximizeButtonHint));
    QVERIFY(!flags.testFlag(Qt::WindowFullscreenButtonHint));
    QVERIFY(!page.dialog.isModal());
}

void TestConnectDialog::declaresItsSlotsInOrder()
{
    QStringList declared;
    const QMetaObject &type = ConnectDialog::staticMetaObject;
    for (int i = type.methodOffset(); i < type.methodCount(); ++i)
        declared.append(QString::fromLatin1(type.method(i).methodSignature()));
    QCOMPARE(declared,
             (QStringList{u"onConnectClicked()"_s, u"loadSettings()"_s, u"saveSettings()"_s,
                          u"onServerListSelectionChanged()"_s, u"addServer()"_s, u"editServer()"_s,
                          u"deleteServer()"_s, u"showServerContextMenu(QPoint)"_s}));
}

void TestConnectDialog::appliesTheThemesColors_data()
{
    QTest::addColumn<QString>("selector");
    QTest::addColumn<QString>("property");
    QTest::addColumn<QString>("dark");
    QTest::addColumn<QString>("other");

    const auto row = [](const char *selector, const char *property, const char *dark,
                        const char *other) {
        QTest::addRow("%s %s", selector, property)
                << QString::fromLatin1(selector) << QString::fromLatin1(property)
                << QString::fromLatin1(dark) << QString::fromLatin1(other);
    };
    row("QDialog", "background", "#2E2E2E", "#FFFFFF");
    row("QLabel", "color", "#DDDDDD", "#333333");
    row("QLineEdit", "color", "#DDDDDD", "#333333");
    row("QListWidget", "color", "#DDDDDD", "#333333");
    row("QCheckBox", "color", "#DDDDDD", "#333333");
    row("QPushButton", "color", "#DDDDDD", "#333333");
    row("QLabel#titleLabel", "color", "#FFFFFF", "#1d1d1f");
    row("QLineEdit", "border", "1px solid #555555", "1px solid #D1D1D6");
    row("QListWidget", "border", "1px solid #555555", "1px solid #D1D1D6");
    row("QLineEdit", "background", "#3E3E3E", "#FFFFFF");
    row("QListWidget", "background", "#1E1E1E", "#FFFFFF");
    row("QListWidget", "alternate-background-color", "#252525", "#F9F9F9");
    row("QListWidget::item:hover", "background", "#3A3A3A", "#E8F0FE");
    row("QListWidget::item:selected", "background", "#505050", "#007AFF");
    row("QListWidget::item:selected", "color", "#FFFFFF", "white");
    row("QPushButton#cancelButton:hover", "background", "#5F1E1E", "#FFE5E5");
    row("QPushButton#addButton:hover", "background", "#1E3A5F", "#E5F0FF");
    row("QPushButton#editButton:hover", "background", "#1E3A5F", "#E5F0FF");
    row("QPushButton#deleteButton:hover", "background", "#5F1E1E", "#FFE5E5");
}

void TestConnectDialog::appliesTheThemesColors()
{
    QFETCH(const QString, selector);
    QFETCH(const QString, property);
    ConnectDialogPage page;
    // The dialog starts with the light theme.
    QTEST(StyleSheetReader(page.dialog.styleSheet()).value(selector, property), "other");
    page.dialog.setCurrentTheme(u"dark"_s);
    QTEST(StyleSheetReader(page.dialog.styleSheet()).value(selector, property), "dark");
    for (const QString &name : {u"light"_s, u"glass"_s, u"sepia"_s, u"Dark"_s}) {
        page.dialog.setCurrentTheme(name);
        QTEST(StyleSheetReader(page.dialog.styleSheet()).value(selector, property), "other");
    }
}

void TestConnectDialog::setsTheSheetOnlyForAnotherTheme()
{
    class StyleChanges final : public QObject
    {
    public:
        bool eventFilter(QObject *, QEvent *event) override
        {
            count += event->type() == QEvent::StyleChange ? 1 : 0;
            return false;
        }
        int count = 0;
    } changes;
    ConnectDialogPage page;
    page.list->installEventFilter(&changes);
    page.dialog.setCurrentTheme(u"light"_s);
    QCOMPARE(changes.count, 0);
    page.dialog.setCurrentTheme(u"dark"_s);
    QVERIFY(changes.count > 0);
}

void TestConnectDialog::keepsFixedValuesInEveryTheme_data()
{
    QTest::addColumn<QString>("selector");
    QTest::addColumn<StyleSheetReader::Declarations>("values");

    using Values = StyleSheetReader::Declarations;
    const Values buttonInList{{u"background"_s, u"transparent"_s},   {u"color"_s, u"#007AFF"_s},
                              {u"border"_s, u"1px solid #007AFF"_s}, {u"border-radius"_s, u"6px"_s},
                              {u"padding"_s, u"8px 16px"_s},         {u"font-size"_s, u"13px"_s},
                              {u"font-weight"_s, u"500"_s}};
    Values deleteButton = buttonInList;
    deleteButton.insert(u"color"_s, u"#FF3B30"_s);
    deleteButton.insert(u"border"_s, u"1px solid #FF3B30"_s);

    QTest::newRow("label") << u"QLabel"_s << Values{{u"font-size"_s, u"13px"_s}};
    QTest::newRow("title") << u"QLabel#titleLabel"_s
                           << Values{{u"font-size"_s, u"22px"_s}, {u"font-weight"_s, u"bold"_s}};
    QTest::newRow("edit") << u"QLineEdit"_s
                          << Values{{u"border-radius"_s, u"6px"_s},
                                    {u"padding"_s, u"8px 12px"_s},
                                    {u"font-size"_s, u"14px"_s},
                                    {u"selection-background-color"_s, u"#007AFF"_s}};
    QTest::newRow("edit with focus")
            << u"QLineEdit:focus"_s
            << Values{{u"border"_s, u"2px solid #007AFF"_s}, {u"padding"_s, u"7px 11px"_s}};
    QTest::newRow("list") << u"QListWidget"_s
                          << Values{{u"border-radius"_s, u"6px"_s}, {u"font-size"_s, u"14px"_s}};
    QTest::newRow("button") << u"QPushButton"_s
                            << Values{{u"border-radius"_s, u"6px"_s},
                                      {u"padding"_s, u"10px 24px"_s},
                                      {u"font-size"_s, u"14px"_s},
                                      {u"font-weight"_s, u"500"_s}};
    QTest::newRow("connect") << u"QPushButton#connectButton"_s
                             << Values{{u"background"_s, u"#007AFF"_s},
                                       {u"color"_s, u"white"_s},
                                       {u"border"_s, u"none"_s}};
    QTest::newRow("connect, hovered")
            << u"QPushButton#connectButton:hover"_s << Values{{u"background"_s, u"#0062CC"_s}};
    QTest::newRow("connect, pressed")
            << u"QPushButton#connectButton:pressed"_s << Values{{u"background"_s, u"#0051AA"_s}};
    QTest::newRow("cancel") << u"QPushButton#cancelButton"_s
                            << Values{{u"background"_s, u"transparent"_s},
                                      {u"color"_s, u"#FF3B30"_s},
                                      {u"border"_s, u"1px solid #FF3B30"_s}};
    QTest::newRow("add") << u"QPushButton#addButton"_s << buttonInList;
    QTest::newRow("edit button") << u"QPushButton#editButton"_s << buttonInList;
    QTest::newRow("delete") << u"QPushButton#deleteButton"_s << deleteButton;
}

void TestConnectDialog::keepsFixedValuesInEveryTheme()
{
    QFETCH(const QString, selector);
    QFETCH(const StyleSheetReader::Declarations, values);
    ConnectDialogPage page;
    for (const QString &theme : {u"light"_s, u"dark"_s, u"glass"_s}) {
        page.dialog.setCurrentTheme(theme);
        const StyleSheetReader sheet(page.dialog.styleSheet());
        for (auto value = values.cbegin(); value != values.cend(); ++value)
            QCOMPARE(sheet.value(selector, value.key()), value.value());
        QVERIFY(!page.dialog.styleSheet().contains(u'<'));
        QVERIFY(!page.dialog.styleSheet().contains(u'%'));
    }
}

// loadSettings() selects a row while the dialog has no style sheet yet.
void TestConnectDialog::appliesTheThemeAfterTheSettings()
{
    SheetRecorder recorder;
    qApp->installEventFilter(&recorder);
    const ConnectDialogPage page;
    QCOMPARE(recorder.sheets, QStringList{QString()});
    QVERIFY(!page.dialog.styleSheet().isEmpty());
}

void TestConnectDialog::isTranslucentOnlyForGlass_data()
{
    QTest::addColumn<QString>("theme");
    QTest::addColumn<bool>("glass");

    QTest::newRow("light") << u"light"_s << false;
    QTest::newRow("dark") << u"dark"_s << false;
    QTest::newRow("glass") << u"glass"_s << true;
    QTest::newRow("unknown") << u"sepia"_s << false;
}

void TestConnectDialog::isTranslucentOnlyForGlass()
{
    QFETCH(const QString, theme);
    QFETCH(const bool, glass);
    ConnectDialogPage page;
    QVERIFY(!page.dialog.testAttribute(Qt::WA_TranslucentBackground));
    page.dialog.setCurrentTheme(theme);
    QCOMPARE(page.dialog.testAttribute(Qt::WA_TranslucentBackground), glass);
    if (glass)
        QVERIFY(!page.dialog.autoFillBackground());
    QCOMPARE(page.dialog.testAttribute(Qt::WA_NoSystemBackground), glass);
    const QColor corner = page.dialog.grab().toImage().pixelColor(2, 2);
    const QColor background(theme == "dark"_L1 ? u"#2E2E2E"_s : u"#FFFFFF"_s);
    QCOMPARE(corner, glass ? QColor(Qt::transparent) : background);
    page.dialog.setCurrentTheme(u"light"_s);
    QVERIFY(!page.dialog.testAttribute(Qt::WA_TranslucentBackground));
}

void TestConnectDialog::paintsSelectedRowsInTheThemesColor()
{
    ConnectDialogPage page;
    QVERIFY(page.select(u"irc.oftc.net:6667"_s));
    const auto colorOfCurrentRow = [&page]() {
        const QRect row = page.list->visualItemRect(page.list->currentItem());
        const QImage image = page.list->viewport()->grab().toImage();
        return image.pixelColor(row.left() + 1, row.center().y());
    };
    page.dialog.show();
    QCOMPARE(colorOfCurrentRow(), QColor(u"#007AFF"_s));
    page.dialog.setCurrentTheme(u"dark"_s);
    QCOMPARE(colorOfCurrentRow(), QColor(u"#505050"_s));
}

void TestConnectDialog::isUsableByKeyboard()
{
    ConnectDialogPage page;
    page.dialog.show();
    QVERIFY(QTest::qWaitForWindowActive(&page.dialog, WaitTimeout));
    const QList<QWidget *> tabOrder{page.server,
                                    page.port,
                                    page.button(u"addButton"_s),
                                    page.button(u"editButton"_s),
                                    page.button(u"deleteButton"_s),
                                    page.list,
                                    page.nickname,
                                    page.realName,
                                    page.channels,
                                    page.ssl,
                                    page.button(u"cancelButton"_s),
                                    page.button(u"connectButton"_s)};
    for (QWidget *widget : tabOrder) {
        QCOMPARE(page.dialog.focusWidget(), widget);
        QTest::keyClick(widget, Qt::Key_Tab);
    }
    QCOMPARE(page.dialog.focusWidget(), page.server);
    QTest::keyClick(page.server, Qt::Key_Backtab, Qt::ShiftModifier);
    QCOMPARE(page.dialog.focusWidget(), page.button(u"connectButton"_s));

    // Arrow keys and typed letters select rows of the list, which fill the fields.
    page.list->setFocus();
    QTest::keyClick(page.list, Qt::Key_Home);
    QCOMPARE(page.server->text(), u"chat.freenode.net"_s);
    QTest::keyClick(page.list, Qt::Key_Down);
    QCOMPARE(page.server->text(), u"eu.undernet.org"_s);
    QCOMPARE(page.port->text(), u"6660"_s);
    QTest::keyClicks(page.list, u"us.u"_s);
    QCOMPARE(page.server->text(), u"us.undernet.org"_s);
    QCOMPARE(page.port->text(), u"7000"_s);
    page.ssl->setFocus();
    QTest::keyClick(page.ssl, Qt::Key_Space);
    QVERIFY(page.ssl->isChecked());
    page.nickname->setFocus();
    QTest::keyClicks(page.nickname, u"nick"_s);
    QTest::keyClick(page.nickname, Qt::Key_Enter);
    QCOMPARE(page.dialog.result(), int(QDialog::Accepted));
    QCOMPARE(StoredServers::history(), QStringList{u"us.undernet.org:7000"_s});
    QCOMPARE(page.dialog.useSsl(), true);
}

void TestConnectDialog::connectsOnReturn_data()
{
    QTest::addColumn<QString>("where");

    QTest::newRow("server") << u"Server:"_s;
    QTest::newRow("port") << u"Port:"_s;
    QTest::newRow("list") << u""_s;
    QTest::newRow("nick") << u"Nickname:"_s;
    QTest::newRow("real name") << u"Real name:"_s;
    QTest::newRow("channels") << u"Join channels:"_s;
}

void TestConnectDialog::connectsOnReturn()
{
    QFETCH(const QString, where);
    ConnectDialogPage page;
    page.nickname->setText(u"nick"_s);
    page.dialog.show();
    QVERIFY(QTest::qWaitForWindowActive(&page.dialog, WaitTimeout));
    QWidget *field = FormFields::fieldOf(&page.dialog, where);
    QVERIFY(field != nullptr);
    field->setFocus();
    QTest::keyClick(field, Qt::Key_Return);
    QCOMPARE(page.dialog.result(), int(QDialog::Accepted));
    QVERIFY(!page.dialog.isVisible());
}

void TestConnectDialog::rejectsOnEscape()
{
    ConnectDialogPage page;
    page.dialog.show();
    QVERIFY(QTest::qWaitForWindowActive(&page.dialog, WaitTimeout));
    QSignalSpy rejected(&page.dialog, &QDialog::rejected);
    QTest::keyClick(page.server, Qt::Key_Escape);
    QCOMPARE(rejected.size(), 1);
    QVERIFY(!page.dialog.isVisible());
}

QTEST_MAIN(TestConnectDialog)
#include "tst_ConnectDialog.moc"
