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
#include "Values/PreferenceTable.h"
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
    if (wordsZ != nullptr) columnP->addWidget(MakeWords(wordsZ, indent));
    return groupP;
}

QString LabelOf(const PreferenceRow& row) { return row.labelZ != nullptr ? row.labelZ : row.keyZ; }

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
        if (row.keyZ == nullptr) {
            AddHeading(row.labelZ);
            continue;
        }
        const PrefRow* const knownP = FindPreference(row.keyZ);
        switch (knownP == nullptr ? CFType::kBool : knownP->type) {
            case CFType::kInteger:
                row.choices.empty() ? AddNumber(row, true) : AddChoice(row);
                break;
            case CFType::kFloat:
                AddNumber(row, false);
                break;
            case CFType::kString:
                AddText(row);
                break;
            default:
                AddSwitch(row);
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

void XPreferencePage::AddSwitch(const PreferenceRow& row) {
    auto* const boxP = new QCheckBox(LabelOf(row).replace('&', "&&"));
    boxP->setObjectName(row.keyZ);
    boxP->setAccessibleName(LabelOf(row));
    boxP->setAccessibleDescription(row.wordsZ != nullptr ? row.wordsZ : tr("On or off"));
    i_formP->addRow(WithWords(boxP, row.wordsZ, kWords_Indent));
    OnShow([this, boxP, row] {
        const QSignalBlocker quiet(boxP);
        boxP->setChecked(i_prefs.GetBool(row.keyZ, row.onB));
    });
    connect(boxP, &QCheckBox::toggled, this, [this, keyZ = row.keyZ](bool onB) { i_prefs.Set(keyZ, CCFValue(onB)); });
}

void XPreferencePage::AddChoice(const PreferenceRow& row) {
    auto* const boxP = new QComboBox;
    boxP->setObjectName(row.keyZ);
    for (const char* const choiceZ : row.choices) boxP->addItem(choiceZ);
    boxP->setAccessibleDescription(row.wordsZ != nullptr ? row.wordsZ : row.keyZ);
    AddWidget(LabelOf(row), boxP, row.wordsZ);
    OnShow([this, boxP, row] {
        const QSignalBlocker quiet(boxP);
        boxP->setCurrentIndex(std::clamp<int>(i_prefs.GetLong(row.keyZ, 0), 0, boxP->count() - 1));
    });
    connect(boxP, &QComboBox::currentIndexChanged, this,
            [this, keyZ = row.keyZ](int choice) { i_prefs.Set(keyZ, CCFValue(choice)); });
}

void XPreferencePage::AddNumber(const PreferenceRow& row, bool wholeB) {
    auto* const boxP = new XNumberBox;
    boxP->setObjectName(row.keyZ);
    boxP->setDecimals(row.decimals);
    const PrefRow* const boundsP = FindPreference(row.keyZ);   // where the program has bounds, they are the box's
    const bool boundB = boundsP != nullptr && std::isfinite(boundsP->least) && std::isfinite(boundsP->most);
    boxP->setRange(boundB ? boundsP->least * row.scale : row.low, boundB ? boundsP->most * row.scale : row.high);
    boxP->setSingleStep(row.step);
    boxP->setSuffix(row.unitZ);
    boxP->setMinimumSize(110, kBox_Height);
    boxP->setAccessibleDescription(row.wordsZ != nullptr ? row.wordsZ : row.keyZ);
    AddWidget(LabelOf(row), boxP, row.wordsZ);
    OnShow([this, boxP, row, wholeB] {
        const QSignalBlocker quiet(boxP);
        const double stored = wholeB ? i_prefs.GetLong(row.keyZ, 0) : i_prefs.GetFloat(row.keyZ, row.high / row.scale);
        boxP->setValue(stored * row.scale);
    });
    connect(boxP, &QDoubleSpinBox::valueChanged, this, [this, row, wholeB](double shown) {
        const double stored = shown / row.scale;
        i_prefs.Set(row.keyZ, wholeB ? CCFValue(std::lround(stored)) : CCFValue(stored));
    });
}

void XPreferencePage::AddText(const PreferenceRow& row) {
    auto* const fieldP = new QLineEdit;
    fieldP->setObjectName(row.keyZ);
    fieldP->setMinimumSize(220, kBox_Height);
    fieldP->setAccessibleDescription(row.wordsZ != nullptr ? row.wordsZ : row.keyZ);
    AddWidget(LabelOf(row), fieldP, row.wordsZ);
    OnShow([this, fieldP, keyZ = row.keyZ] { fieldP->setText(QtText(i_prefs.GetString(keyZ))); });
    connect(fieldP, &QLineEdit::editingFinished, this, [this, fieldP, row] {
        const SuperString text(fieldP->text().toStdString());
        if (text == i_prefs.GetString(row.keyZ)) return;
        i_prefs.Set(row.keyZ, CCFValue(text));
    });
}
