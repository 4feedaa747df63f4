#include "Shell/XPreferencePage.h"

#include <cmath>
#include <QCheckBox>
#include <QComboBox>
#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QSignalBlocker>
#include <QVBoxLayout>

#include "Values/CPreferences.h"
#include "Widgets/QtText.h"
#include "Widgets/XNumberBox.h"

namespace {

constexpr int kBox_Height = 30;
constexpr int kWords_Indent = 26;   // beneath the words of a check box

QLabel* MakeWords(const QString& text, int indent, const char* lookZ = "quiet") {
    auto* const labelP = new QLabel(text);
    labelP->setObjectName(lookZ);
    labelP->setTextFormat(Qt::PlainText);
    labelP->setWordWrap(true);
    labelP->setContentsMargins(indent, 0, 0, 0);
    return labelP;
}

/** `widgetP` at its own width, with its words, if any, close beneath it, so that they are read as one. */
QWidget* WithWords(QWidget* widgetP, const char* wordsZ, int indent) {
    auto* const groupP = new QWidget;
    auto* const columnP = new QVBoxLayout(groupP);
    columnP->setContentsMargins(0, 0, 0, 0);
    columnP->setSpacing(2);
    columnP->addWidget(widgetP, 0, Qt::AlignLeft);
    if (wordsZ != nullptr) columnP->addWidget(MakeWords(QObject::tr(wordsZ), indent));
    return groupP;
}

QString KeyOf(const PreferenceRow& row) { return QtText(row.pref.Row()->key); }
QString LabelOf(const PreferenceRow& row) { return QObject::tr(row.labelZ); }

}   // namespace

XPreferencePage::XPreferencePage(CPreferences& prefs) : i_prefs(prefs), i_formP(new QFormLayout) {
    setFrameShape(QFrame::NoFrame);
    setWidgetResizable(true);
    setFocusPolicy(Qt::NoFocus);
    auto* const sheetP = new QWidget;
    sheetP->setObjectName("page");
    i_formP->setContentsMargins(24, 16, 24, 20);
    i_formP->setHorizontalSpacing(16);
    i_formP->setVerticalSpacing(10);
    i_formP->setFieldGrowthPolicy(QFormLayout::AllNonFixedFieldsGrow);
    i_formP->setLabelAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    i_formP->setFormAlignment(Qt::AlignLeft | Qt::AlignTop);
    sheetP->setLayout(i_formP);
    setWidget(sheetP);
}

void XPreferencePage::Add(std::span<const PreferenceRow> rows) {
    for (const PreferenceRow& row : rows) {
        const PrefRow* const prefP = row.pref.Row();
        if (prefP == nullptr) {
            AddHeading(LabelOf(row));
            continue;
        }
        switch (prefP->type) {
            case CFType::kInteger: {
                const LongPref pref(*prefP);
                if (!row.choices.empty())
                    AddChoice(row, pref);
                else
                    AddNumber(
                        row, [this, pref] { return i_prefs.GetLong(pref); },
                        [this, pref](double value) { i_prefs.SetLong(pref, std::lround(value)); });
                break;
            }
            case CFType::kFloat: {
                const FloatPref pref(*prefP);
                AddNumber(
                    row, [this, pref] { return i_prefs.GetFloat(pref); },
                    [this, pref](double value) { i_prefs.SetFloat(pref, value); });
                break;
            }
            case CFType::kString:
                AddText(row, StringPref(*prefP));
                break;
            default:
                AddSwitch(row, BoolPref(*prefP));
        }
    }
}

void XPreferencePage::AddHeading(const QString& text) {
    auto* const labelP = new QLabel(text);
    labelP->setObjectName("heading");
    labelP->setContentsMargins(0, i_formP->rowCount() == 0 ? 0 : 12, 0, 2);
    i_formP->addRow(labelP);
}

void XPreferencePage::AddWidget(const QString& label, QWidget* widgetP, const char* wordsZ) {
    if (label.isEmpty()) return i_formP->addRow(widgetP);
    if (widgetP->accessibleName().isEmpty()) widgetP->setAccessibleName(label);
    auto* const labelP = new QLabel(label);
    labelP->setMinimumHeight(kBox_Height);   // in line with the box beside it
    labelP->setBuddy(widgetP);
    i_formP->addRow(labelP, WithWords(widgetP, wordsZ, 1));
}

void XPreferencePage::AddWords(const QString& text, const char* lookZ) { i_formP->addRow(MakeWords(text, 0, lookZ)); }

void XPreferencePage::OnShow(std::function<void()> show) {
    show();
    i_shows.push_back(std::move(show));
}

void XPreferencePage::ShowValues() {
    for (const auto& show : i_shows) show();
}

void XPreferencePage::AddSwitch(const PreferenceRow& row, BoolPref pref) {
    auto* const boxP = new QCheckBox(LabelOf(row).replace('&', "&&"));
    boxP->setObjectName(KeyOf(row));
    boxP->setAccessibleName(LabelOf(row));
    boxP->setAccessibleDescription(row.wordsZ != nullptr ? tr(row.wordsZ) : tr("On or off"));
    i_formP->addRow(WithWords(boxP, row.wordsZ, kWords_Indent));
    OnShow([this, boxP, pref] {
        const QSignalBlocker quiet(boxP);
        boxP->setChecked(i_prefs.GetBool(pref));
    });
    connect(boxP, &QCheckBox::toggled, this, [this, pref](bool onB) { i_prefs.SetBool(pref, onB); });
}

void XPreferencePage::AddChoice(const PreferenceRow& row, LongPref pref) {
    auto* const boxP = new QComboBox;
    boxP->setObjectName(KeyOf(row));
    for (const char* const choiceZ : row.choices) boxP->addItem(tr(choiceZ));
    boxP->setAccessibleDescription(row.wordsZ != nullptr ? tr(row.wordsZ) : LabelOf(row));
    AddWidget(LabelOf(row), boxP, row.wordsZ);
    OnShow([this, boxP, pref] {
        const QSignalBlocker quiet(boxP);
        boxP->setCurrentIndex(std::clamp<int>(i_prefs.GetLong(pref), 0, boxP->count() - 1));
    });
    connect(boxP, &QComboBox::currentIndexChanged, this, [this, pref](int choice) { i_prefs.SetLong(pref, choice); });
}

void XPreferencePage::AddNumber(const PreferenceRow& row, const std::function<double()>& get,
                                std::function<void(double)> set) {
    auto* const boxP = new XNumberBox;
    boxP->setObjectName(KeyOf(row));
    boxP->setDecimals(row.decimals);
    const PrefRow& bounds = *row.pref.Row();   // where the program has bounds, they are the box's
    const bool boundB = std::isfinite(bounds.least) && std::isfinite(bounds.most);
    boxP->setRange(boundB ? bounds.least * row.scale : row.low, boundB ? bounds.most * row.scale : row.high);
    boxP->setSingleStep(row.step);
    boxP->setSuffix(row.unitZ);
    boxP->setMinimumSize(110, kBox_Height);
    boxP->setAccessibleDescription(row.wordsZ != nullptr ? tr(row.wordsZ) : LabelOf(row));
    AddWidget(LabelOf(row), boxP, row.wordsZ);
    OnShow([boxP, get, scale = row.scale] {
        const QSignalBlocker quiet(boxP);
        boxP->setValue(get() * scale);
    });
    connect(boxP, &QDoubleSpinBox::valueChanged, this,
            [set = std::move(set), scale = row.scale](double shown) { set(shown / scale); });
}

void XPreferencePage::AddText(const PreferenceRow& row, StringPref pref) {
    auto* const fieldP = new QLineEdit;
    fieldP->setObjectName(KeyOf(row));
    fieldP->setMinimumSize(220, kBox_Height);
    fieldP->setAccessibleDescription(row.wordsZ != nullptr ? tr(row.wordsZ) : LabelOf(row));
    AddWidget(LabelOf(row), fieldP, row.wordsZ);
    OnShow([this, fieldP, pref] { fieldP->setText(QtText(i_prefs.GetString(pref))); });
    connect(fieldP, &QLineEdit::editingFinished, this,
            [this, fieldP, pref] { i_prefs.SetString(pref, SuperString(fieldP->text().toStdString())); });
}
