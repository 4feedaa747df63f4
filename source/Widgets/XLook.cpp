#include "Widgets/XLook.h"

#include <QApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusVariant>

#include "Widgets/XStyle.h"

namespace {

// A booth is dark: no pure white, no pure black, one colour that says "this plays".
const XLook::Colors kDark_Colors{.window = QColor(0x1b, 0x1d, 0x24),
                                 .raised = QColor(0x2a, 0x2d, 0x38),
                                 .field = QColor(0x14, 0x16, 0x1b),
                                 .stripe = QColor(0x18, 0x1a, 0x20),
                                 .line = QColor(0x3a, 0x3e, 0x4b),
                                 .text = QColor(0xe6, 0xe8, 0xee),
                                 .quiet = QColor(0x9b, 0xa1, 0xb2),
                                 .accent = QColor(0x3b, 0x70, 0xd8),
                                 .accentText = QColor(0xff, 0xff, 0xff),
                                 .playing = QColor(0x5f, 0xd3, 0x9b),
                                 .warning = QColor(0xff, 0x8a, 0x70)};
const XLook::Colors kLight_Colors{.window = QColor(0xf1, 0xf2, 0xf5),
                                  .raised = QColor(0xff, 0xff, 0xff),
                                  .field = QColor(0xff, 0xff, 0xff),
                                  .stripe = QColor(0xf8, 0xf9, 0xfb),
                                  .line = QColor(0xcd, 0xd1, 0xda),
                                  .text = QColor(0x1d, 0x20, 0x28),
                                  .quiet = QColor(0x62, 0x68, 0x78),
                                  .accent = QColor(0x2f, 0x66, 0xd0),
                                  .accentText = QColor(0xff, 0xff, 0xff),
                                  .playing = QColor(0x0b, 0x7a, 0x44),
                                  .warning = QColor(0xc0, 0x3a, 0x1e)};

constexpr const char* kPortal_ServiceZ = "org.freedesktop.portal.Desktop";
constexpr const char* kPortal_PathZ = "/org/freedesktop/portal/desktop";
constexpr const char* kPortal_SettingsZ = "org.freedesktop.portal.Settings";
constexpr const char* kAppearanceZ = "org.freedesktop.appearance";
constexpr const char* kSchemeZ = "color-scheme";
constexpr uint kScheme_Dark = 1;

XLook* s_lookP = nullptr;
const XLook::Colors* s_colorsP = &kDark_Colors;

/** Names in braces are the colours. */
constexpr const char* kSheetZ = R"(
QToolTip { background: {raised}; color: {text}; border: 1px solid {line}; padding: 4px 6px; }
QMenuBar { background: {window}; border-bottom: 1px solid {line}; padding: 2px 4px; }
QMenuBar::item { padding: 4px 9px; border-radius: 5px; background: transparent; }
QMenuBar::item:selected { background: {raised}; }
QMenu { background: {raised}; border: 1px solid {line}; padding: 5px; }
QMenu::item { padding: 5px 26px 5px 12px; border-radius: 5px; }
QMenu::item:selected { background: {accent}; color: {accentText}; }
QMenu::item:disabled { color: {quiet}; }
QMenu::separator { height: 1px; background: {line}; margin: 5px 8px; }
QMenu::indicator { width: 14px; height: 14px; margin-left: 6px; }
QStatusBar { border-top: 1px solid {line}; color: {quiet}; }
QStatusBar::item { border: none; }
QStatusBar QLabel { padding-right: 12px; }
QSplitter::handle { background: {line}; }
QHeaderView { background: {window}; border: none; }
QHeaderView::section { background: {window}; color: {quiet}; border: none; border-right: 1px solid {line};
    border-bottom: 1px solid {line}; padding: 5px 8px; }
QHeaderView::section:hover { color: {text}; }
QTableView, QListView { background: {field}; alternate-background-color: {stripe}; border: none; outline: none;
    selection-background-color: {accent}; selection-color: {accentText}; }
QTableView::item { padding: 0 6px; border: none; }
QTableView QTableCornerButton::section { background: {window}; border: none; }
QListView::item { padding: 5px 8px; border-radius: 6px; }
QListView::item:selected { background: {accent}; color: {accentText}; }
QTableView QLineEdit { border-radius: 0; padding: 0 6px; min-height: 0; }
QLineEdit { background: {field}; border: 1px solid {line}; border-radius: 6px;
    padding: 4px 8px; selection-background-color: {accent}; selection-color: {accentText}; }
QLineEdit:focus { border: 1px solid {accent}; }
QPushButton { background: {raised}; border: 1px solid {line}; border-radius: 6px; padding: 6px 16px; }
QPushButton:hover { border-color: {quiet}; }
QPushButton:pressed { background: {line}; }
QPushButton:default { background: {accent}; border-color: {accent}; color: {accentText}; }
QPushButton:focus { border-color: {accent}; }
QPushButton:disabled { color: {quiet}; }
QToolButton { background: transparent; border: 1px solid transparent; border-radius: 6px; padding: 4px; }
QToolButton:hover { background: {raised}; }
QToolButton:pressed, QToolButton:checked { background: {line}; }
QToolButton:focus { border: 1px solid {accent}; }
QToolButton::menu-indicator { image: none; }
QToolButton#play { background: {accent}; border-radius: 24px; }
QToolButton#play:hover { background: {accentHover}; }
QToolButton#play:focus { border: 2px solid {text}; }
QToolButton#value { font-size: 15px; font-weight: 600; padding: 2px 4px; }
QToolButton#value[changed="true"] { color: {playing}; }
QLabel#caption { color: {quiet}; font-size: 11px; }
QLabel#quiet { color: {quiet}; }
QLabel#warning { color: {warning}; }
QLabel#songTitle { font-size: 18px; font-weight: 600; }
QLabel#artist { font-size: 14px; color: {quiet}; }
QLabel#time { font-size: 32px; font-weight: 600; }
QLabel#time[low="true"] { font-size: 20px; }
QLabel#time[chosen="false"] { color: {quiet}; font-weight: 400; }
QWidget#transport { background: {window}; border-bottom: 1px solid {line}; }
QWidget#sidebar { background: {window}; }
QWidget#sidebar QListView { background: {window}; }
QWidget#preview { background: #000000; }
QScrollBar:vertical { background: transparent; width: 12px; margin: 0; }
QScrollBar:horizontal { background: transparent; height: 12px; margin: 0; }
QScrollBar::handle { background: {line}; border-radius: 4px; margin: 2px; min-height: 32px; min-width: 32px; }
QScrollBar::handle:hover { background: {quiet}; }
QScrollBar::add-line, QScrollBar::sub-line { width: 0; height: 0; }
QScrollBar::add-page, QScrollBar::sub-page { background: transparent; }
QSlider::groove:horizontal { height: 4px; border-radius: 2px; background: {line}; }
QSlider::sub-page:horizontal { height: 4px; border-radius: 2px; background: {accent}; }
QSlider::handle:horizontal { background: {text}; width: 14px; height: 14px; margin: -5px 0; border-radius: 7px; }
QSlider::handle:horizontal:hover { background: {accent}; }
QSlider:focus { border: 1px solid {accent}; border-radius: 6px; }
QTabWidget::pane { border: none; border-top: 1px solid {line}; }
QTabBar::tab { padding: 8px 18px; color: {quiet}; border-bottom: 2px solid transparent; background: transparent; }
QTabBar::tab:selected { color: {text}; border-bottom: 2px solid {accent}; }
QTabBar::tab:focus { color: {text}; background: {raised}; }
QTreeView { background: {field}; alternate-background-color: {stripe}; border: 1px solid {line}; border-radius: 6px;
    selection-background-color: {accent}; selection-color: {accentText}; }
QTreeView::item { height: 26px; padding: 0 4px; }
QAbstractSpinBox QLineEdit { border: none; background: transparent; border-radius: 0; padding: 0 2px; }
QLabel#heading { font-size: 15px; font-weight: 600; }
QWidget#page { background: {window}; }
QFrame#popup { background: {raised}; border: 1px solid {line}; }
QScrollArea { background: {window}; border: none; }
QFrame#notice { background: {raised}; border-top: 1px solid {line}; }
QFrame#notice QToolButton { border: 1px solid {line}; padding: 3px 10px; }
QFrame#notice QToolButton:focus { border: 1px solid {accent}; }
QToolButton#tasks { color: {text}; padding: 1px 8px; border-radius: 4px; }
QDialogButtonBox, QMessageBox { dialogbuttonbox-buttons-have-icons: 0; }
QProgressBar { background: {line}; border: none; border-radius: 4px; }
QProgressBar::chunk { background: {accent}; border-radius: 4px; }
)";

QString Sheet(const XLook::Colors& colors) {
    const std::pair<const char*, QColor> names[] = {{"{window}", colors.window},
                                                    {"{raised}", colors.raised},
                                                    {"{field}", colors.field},
                                                    {"{stripe}", colors.stripe},
                                                    {"{line}", colors.line},
                                                    {"{text}", colors.text},
                                                    {"{quiet}", colors.quiet},
                                                    {"{accent}", colors.accent},
                                                    {"{accentText}", colors.accentText},
                                                    {"{playing}", colors.playing},
                                                    {"{accentHover}", colors.accent.lighter(115)},
                                                    {"{warning}", colors.warning}};
    QString sheet = kSheetZ;
    for (const auto& [nameZ, color] : names) sheet.replace(nameZ, color.name());
    return sheet;
}

QPalette Palette(const XLook::Colors& colors) {
    QPalette palette(colors.raised, colors.window);
    palette.setColor(QPalette::Window, colors.window);
    palette.setColor(QPalette::WindowText, colors.text);
    palette.setColor(QPalette::Base, colors.field);
    palette.setColor(QPalette::AlternateBase, colors.stripe);
    palette.setColor(QPalette::Text, colors.text);
    palette.setColor(QPalette::PlaceholderText, colors.quiet);
    palette.setColor(QPalette::Button, colors.raised);
    palette.setColor(QPalette::ButtonText, colors.text);
    palette.setColor(QPalette::BrightText, colors.warning);
    palette.setColor(QPalette::Highlight, colors.accent);
    palette.setColor(QPalette::HighlightedText, colors.accentText);
    palette.setColor(QPalette::ToolTipBase, colors.raised);
    palette.setColor(QPalette::ToolTipText, colors.text);
    palette.setColor(QPalette::Link, colors.text);   // underlined
    palette.setColor(QPalette::Mid, colors.line);
    for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
        palette.setColor(QPalette::Disabled, role, colors.quiet);
    return palette;
}

}   // namespace

XLook::XLook() {
    s_lookP = this;
    // Until the desktop answers: what the toolkit has of it.
    const QPalette given = QApplication::palette();
    i_desktopDarkB = given.color(QPalette::Window).lightness() < given.color(QPalette::WindowText).lightness();
    QApplication::setStyle(new XStyle);   // the toolkit owns it
    Apply();
    AskDesktop();
}

XLook::~XLook() { s_lookP = nullptr; }

XLook* XLook::Get() { return s_lookP; }

const XLook::Colors& XLook::Now() { return *s_colorsP; }

void XLook::Choose(Choice choice) {
    i_choice = choice;
    Apply();
}

void XLook::AskDesktop() {
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected()) return;
    bus.connect(kPortal_ServiceZ, kPortal_PathZ, kPortal_SettingsZ, "SettingChanged", this,
                SLOT(OnDesktopSetting(QString, QString, QDBusVariant)));
    QDBusMessage call = QDBusMessage::createMethodCall(kPortal_ServiceZ, kPortal_PathZ, kPortal_SettingsZ, "Read");
    call << QString(kAppearanceZ) << QString(kSchemeZ);
    auto* const watcherP = new QDBusPendingCallWatcher(bus.asyncCall(call), this);
    connect(watcherP, &QDBusPendingCallWatcher::finished, this, [this, watcherP] {
        const QDBusPendingReply<QDBusVariant> reply = *watcherP;
        if (!reply.isError()) OnDesktopSetting(kAppearanceZ, kSchemeZ, reply.value());
        watcherP->deleteLater();
    });
}

void XLook::OnDesktopSetting(const QString& space, const QString& key, const QDBusVariant& value) {
    if (space != kAppearanceZ || key != kSchemeZ) return;
    QVariant inner = value.variant();
    if (inner.canConvert<QDBusVariant>()) inner = inner.value<QDBusVariant>().variant();   // some wrap it twice
    i_desktopDarkB = inner.toUInt() == kScheme_Dark;
    Apply();
}

void XLook::Apply() {
    const bool darkB = i_choice == Choice::kDark || (i_choice == Choice::kDesktop && i_desktopDarkB);
    if (i_appliedB && darkB == i_darkB) return;
    i_appliedB = true;
    i_darkB = darkB;
    s_colorsP = darkB ? &kDark_Colors : &kLight_Colors;
    QApplication::setPalette(Palette(*s_colorsP));
    qApp->setStyleSheet(Sheet(*s_colorsP));
    emit Changed();
}
