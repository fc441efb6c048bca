#include "PreferencesDialog.h"

#include "ChatBackground.h"
#include "DialogParts.h"
#include "FocusFrame.h"
#include "MainWindow.h"
#include "ThemeManager.h"

#include <QCheckBox>
#include <QColorDialog>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QFileDialog>
#include <QFontDialog>
#include <QFontInfo>
#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPointer>
#include <QPushButton>
#include <QSettings>
#include <QSpinBox>
#include <QTabBar>
#include <QTabWidget>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace {

// Padding of the pages in the theme's style sheet.
constexpr int PagePadding = 8;

QFormLayout *makeForm(QWidget *page)
{
    auto *form = new QFormLayout(page);
    form->setLabelAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    form->setFieldGrowthPolicy(QFormLayout::ExpandingFieldsGrow);
    form->setSpacing(12);
    return form;
}

QCheckBox *makeCheck(const QString &text, bool checked)
{
    auto *check = new QCheckBox(text);
    check->setChecked(checked);
    return check;
}

QComboBox *makeCombo(const QStringList &items)
{
    return DialogParts::makeCombo(items, u"prefsWideCombo"_s);
}

struct Range
{
    int lowest = 0;
    int highest = 0;
};

QSpinBox *makeSpin(Range range, int value)
{
    auto *spin = new QSpinBox;
    spin->setObjectName(u"prefsSpinBox"_s);
    spin->setRange(range.lowest, range.highest);
    spin->setValue(value);
    return spin;
}

QSpinBox *makeWideSpin(Range range, int value, const QString &suffix = {})
{
    QSpinBox *spin = makeSpin(range, value);
    spin->setObjectName(u"prefsWideSpin"_s);
    spin->setSuffix(suffix);
    spin->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    return spin;
}

// Returns the text for a button. Escapes "&", which would be a mnemonic.
QString fontText(const QFont &font)
{
    return u"%1 %2"_s.arg(font.family().replace(u'&', "&&"_L1), QString::number(font.pointSize()));
}

} // namespace

PreferencesDialog::PreferencesDialog(MainWindow *parent)
    : QDialog(parent)
    , mainWindow(parent)
    , pendingBgImage(parent->chatBgImage)
    , pendingBgColor(parent->chatBgColor)
{
    setWindowFlag(Qt::WindowMaximizeButtonHint, false);
    setWindowTitle(tr("Preferences"));
    setMinimumSize(560, 520);
    setAttribute(Qt::WA_DeleteOnClose);

    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(28, 28, 28, 20);
    layout->setSpacing(18);
    auto *pages = new QTabWidget;
    FocusFrame::addTo(*pages->tabBar());
    pages->addTab(buildInterfacePage(), tr("Interface"));
    pages->addTab(buildChatPage(), tr("Chat"));
    pages->addTab(buildNetworkPage(), tr("Network"));
    layout->addWidget(pages);
    buildButtons();
    DialogParts::namePopups(*this);

    setWindowFlag(Qt::WindowFullscreenButtonHint, false);
    // Before adjustSize(): the sheet changes the fields' sizes.
    applyTheme();
    adjustSize();
    // adjustSize() ignores the pages' padding and is limited to two thirds of the screen.
    setFixedSize(size().expandedTo(minimumSizeHint() + 2 * QSize(PagePadding, PagePadding)));
}

PreferencesDialog::~PreferencesDialog()
{
    // The dialogs of Qt's static functions.
    DialogParts::detachNestedWindows(*this);
}

void PreferencesDialog::showEvent(QShowEvent *event)
{
    QDialog::showEvent(event);
    applyTheme();
}

// ---------------------------------------------------------------------------------------------
// Construction

// Intended: `switchTabsCheck`, `completionSuffixEdit`, `minPrefixSpin`, `highlightCheck`,
// `soundCheck`, `userSortCombo` and `authMethodCombo` have fixed values and are never read. Their
// features do not exist yet.

QWidget *PreferencesDialog::buildInterfacePage()
{
    auto *page = new QWidget;
    QFormLayout *form = makeForm(page);

    fontButton = DialogParts::makeButton(fontText(mainWindow->chatFont), u"prefsFontButton"_s);
    fontButton->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    connect(fontButton, &QPushButton::clicked, this, &PreferencesDialog::chooseFont);
    form->addRow(tr("Chat font:"), fontButton);

    // Formats are not translated. The first is shown for a stored format that is not listed.
    timestampCombo = makeCombo({u"[HH:mm:ss]"_s, u"[hh:mm:ss AP]"_s, u"[HH:mm]"_s, u"hh:mm"_s});
    timestampCombo->setCurrentText(mainWindow->timestampFormat);
    form->addRow(tr("Timestamp:"), timestampCombo);

    emojiSizeSpin = makeSpin({12, 48}, mainWindow->emojiSize);
    form->addRow(tr("Emoji size:"), emojiSizeSpin);
    switchTabsCheck = makeCheck(tr("Switch to new tabs automatically"), true);
    form->addRow(switchTabsCheck);

    form->addRow(new QLabel(tr("Chat background:")));
    form->addRow(buildBackgroundButtons());
    bgPreviewLabel = new QLabel(tr("None"));
    bgPreviewLabel->setMinimumHeight(60);
    bgPreviewLabel->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
    bgPreviewLabel->setAlignment(Qt::AlignCenter);
    bgPreviewLabel->setFrameStyle(QFrame::StyledPanel | QFrame::Sunken);
    form->addRow(bgPreviewLabel);
    updateBgPreview();
    return page;
}

QBoxLayout *PreferencesDialog::buildBackgroundButtons()
{
    bgImageButton = DialogParts::makeButton(tr("Choose Image..."), u"prefsBgButton"_s);
    bgColorButton = DialogParts::makeButton(tr("Solid Color..."), u"prefsBgButton"_s);
    bgResetButton = DialogParts::makeButton(tr("Reset"), u"prefsDeleteButton"_s);
    connect(bgImageButton, &QPushButton::clicked, this, &PreferencesDialog::chooseBgImage);
    connect(bgColorButton, &QPushButton::clicked, this, &PreferencesDialog::chooseBgColor);
    connect(bgResetButton, &QPushButton::clicked, this, &PreferencesDialog::resetBackground);

    auto *row = new QHBoxLayout;
    row->addWidget(bgImageButton);
    row->addWidget(bgColorButton);
    row->addWidget(bgResetButton);
    row->addStretch();
    return row;
}

QWidget *PreferencesDialog::buildChatPage()
{
    auto *page = new QWidget;
    QFormLayout *form = makeForm(page);

    completionSuffixEdit = new QLineEdit(u":"_s);
    completionSuffixEdit->setMaxLength(3);
    completionSuffixEdit->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    form->addRow(tr("Nick completion suffix:"), completionSuffixEdit);
    minPrefixSpin = makeSpin({1, 10}, 1);
    form->addRow(tr("Min prefix length:"), minPrefixSpin);

    logEnabledCheck = makeCheck(tr("Enable logging"), mainWindow->logEnabled);
    form->addRow(logEnabledCheck);
    QBoxLayout *logPathRow = buildLogPathRow();
    form->addRow(tr("Log path:"), logPathRow);

    highlightCheck = makeCheck(tr("Highlight when your nick is mentioned"), true);
    form->addRow(highlightCheck);
    soundCheck = makeCheck(tr("Play sound on highlight"), false);
    form->addRow(soundCheck);
    userSortCombo = makeCombo({tr("Alphabetical"), tr("By status then alpha")});
    form->addRow(tr("User list sorting:"), userSortCombo);
    return page;
}

QBoxLayout *PreferencesDialog::buildLogPathRow()
{
    logPathEdit = new QLineEdit(mainWindow->logPath);
    logPathEdit->setPlaceholderText(tr("Log directory path..."));
    // A QFormLayout label names a widget for screen readers, but not a layout.
    logPathEdit->setAccessibleName(tr("Log path"));
    QPushButton *browse = DialogParts::makeButton(tr("..."), u"prefsBgButton"_s);
    browse->setAccessibleName(tr("Select log directory"));
    connect(browse, &QPushButton::clicked, this, &PreferencesDialog::chooseLogPath);

    auto *row = new QHBoxLayout;
    row->addWidget(logPathEdit);
    row->addWidget(browse);
    return row;
}

QWidget *PreferencesDialog::buildNetworkPage()
{
    auto *page = new QWidget;
    QFormLayout *form = makeForm(page);

    autoReconnectCheck = makeCheck(tr("Auto-reconnect on disconnect"), mainWindow->autoReconnect);
    form->addRow(autoReconnectCheck);
    reconnectDelaySpin = makeWideSpin({1, 300}, mainWindow->reconnectDelay, tr(" sec"));
    form->addRow(tr("Reconnect delay:"), reconnectDelaySpin);
    reconnectAttemptsSpin = makeWideSpin({0, 100}, mainWindow->reconnectAttempts);
    reconnectAttemptsSpin->setSpecialValueText(tr("Unlimited"));
    form->addRow(tr("Max attempts:"), reconnectAttemptsSpin);
    pingIntervalSpin = makeWideSpin({10, 600}, mainWindow->pingInterval, tr(" sec"));
    form->addRow(tr("PING interval:"), pingIntervalSpin);
    pingTimeoutSpin = makeWideSpin({5, 120}, mainWindow->pingTimeout, tr(" sec"));
    form->addRow(tr("PONG timeout:"), pingTimeoutSpin);
    acceptInvalidSslCheck =
            makeCheck(tr("Accept invalid SSL certificates"), mainWindow->acceptInvalidSsl);
    form->addRow(acceptInvalidSslCheck);
    authMethodCombo = makeCombo({tr("Server password"), tr("SASL PLAIN"), tr("SASL EXTERNAL")});
    form->addRow(tr("Auth method:"), authMethodCombo);
    return page;
}

void PreferencesDialog::buildButtons()
{
    buttonBox = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Apply
                                     | QDialogButtonBox::Cancel);
    for (const auto which : {QDialogButtonBox::Ok, QDialogButtonBox::Apply})
        FocusFrame::addTo(*buttonBox->button(which));
    connect(buttonBox->button(QDialogButtonBox::Apply), &QPushButton::clicked, this,
            &PreferencesDialog::saveAndApply);
    connect(buttonBox, &QDialogButtonBox::accepted, this, [this] {
        saveAndApply();
        accept();
    });
    connect(buttonBox, &QDialogButtonBox::rejected, this, &PreferencesDialog::reject);
    layout()->addWidget(buttonBox);
}

// ---------------------------------------------------------------------------------------------
// Choosing

void PreferencesDialog::chooseFont()
{
    const QPointer<PreferencesDialog> self = this;
    // A copy: getFont() reads it after the nested event loop, which the window may not outlive.
    QFont initial = mainWindow->chatFont;
    // GTK's dialog cannot select a family that is not installed, and then returns size 0.
    initial.setFamily(QFontInfo(initial).family());
    bool ok = false;
    const QFont chosen = QFontDialog::getFont(&ok, initial, this, QString());
    if (!ok || self == nullptr)
        return;
    mainWindow->chatFont = chosen;
    fontButton->setText(fontText(chosen));
}

void PreferencesDialog::chooseBgImage()
{
    const QPointer<PreferencesDialog> self = this;
    const QString path =
            QFileDialog::getOpenFileName(this, tr("Select Background Image"), QString(),
                                         tr("Images (*.png *.jpg *.jpeg *.bmp *.gif)"));
    if (path.isEmpty() || self == nullptr)
        return;
    pendingBgImage = path;
    pendingBgColor = QColor();
    updateBgPreview();
}

void PreferencesDialog::chooseBgColor()
{
    const QPointer<PreferencesDialog> self = this;
    const QColor color =
            QColorDialog::getColor(pendingBgColor.isValid() ? pendingBgColor : QColor(Qt::white),
                                   this, tr("Select Background Color"));
    if (!color.isValid() || self == nullptr)
        return;
    pendingBgColor = color;
    pendingBgImage.clear();
    updateBgPreview();
}

void PreferencesDialog::chooseLogPath()
{
    const QPointer<PreferencesDialog> self = this;
    const QString path = QFileDialog::getExistingDirectory(this, tr("Select log directory"),
                                                           QString(), QFileDialog::ShowDirsOnly);
    if (path.isEmpty() || self == nullptr)
        return;
    logPathEdit->setText(path);
}

void PreferencesDialog::resetBackground()
{
    pendingBgImage.clear();
    pendingBgColor = QColor();
    updateBgPreview();
}

void PreferencesDialog::updateBgPreview()
{
    QString fill = u"background-color: #f5f5f5;"_s;
    if (!pendingBgImage.isEmpty())
        fill = ChatBackground::imageDeclaration(pendingBgImage);
    else if (pendingBgColor.isValid())
        fill = u"background-color: %1;"_s.arg(pendingBgColor.name());
    bgPreviewLabel->setStyleSheet(fill + u" border: 1px solid #999; border-radius: 4px;"_s);
    const bool isEmpty = pendingBgImage.isEmpty() && !pendingBgColor.isValid();
    bgPreviewLabel->setText(isEmpty ? tr("None image...") : QString());
}

// ---------------------------------------------------------------------------------------------
// Saving

void PreferencesDialog::saveAndApply()
{
    // Intended: each save restores the only theme that users can have.
    mainWindow->applyTheme(u"light"_s);
    mainWindow->applyChatFont();
    mainWindow->timestampFormat = timestampCombo->currentText();
    mainWindow->emojiSize = emojiSizeSpin->value();
    mainWindow->logEnabled = logEnabledCheck->isChecked();
    mainWindow->logPath = logPathEdit->text().trimmed();
    mainWindow->chatBgImage = pendingBgImage;
    mainWindow->chatBgColor = pendingBgColor;
    mainWindow->applyChatBackground();
    mainWindow->autoReconnect = autoReconnectCheck->isChecked();
    mainWindow->reconnectDelay = reconnectDelaySpin->value();
    mainWindow->reconnectAttempts = reconnectAttemptsSpin->value();
    mainWindow->pingInterval = pingIntervalSpin->value();
    mainWindow->pingTimeout = pingTimeoutSpin->value();
    mainWindow->acceptInvalidSsl = acceptInvalidSslCheck->isChecked();
    QSettings settings;
    settings.setValue(u"theme"_s, u"light"_s);
    mainWindow->Preferences::saveTo(settings);
    applyTheme();
}

void PreferencesDialog::applyTheme()
{
    setStyleSheet(QString());
    setAttribute(Qt::WA_TranslucentBackground, false);
    setAutoFillBackground(true);
    // Used by the style sheet.
    buttonBox->button(QDialogButtonBox::Apply)->setObjectName(u"connectButton"_s);
    buttonBox->button(QDialogButtonBox::Ok)->setObjectName(u"connectButton"_s);
    buttonBox->button(QDialogButtonBox::Cancel)->setObjectName(u"cancelButton"_s);
    setStyleSheet(ThemeManager::preferencesDialogStyleSheet(mainWindow->currentTheme));
    updateGeometry();
    repaint();
}
