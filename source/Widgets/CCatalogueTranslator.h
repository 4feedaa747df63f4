#pragma once
#include <QTranslator>

/** The desktop's texts by the program's own catalogue (Core/Localize.h): `tr` and the toolkit's own words alike.
    Threads  any, as the toolkit asks. Installed once, behind ChooseCatalogue. */
class CCatalogueTranslator final : public QTranslator {
    Q_OBJECT
public:
    using QTranslator::QTranslator;
    [[nodiscard]] QString translate(const char* contextZ, const char* textZ, const char* disambiguationZ,
                                    int number) const override;
    [[nodiscard]] bool isEmpty() const override { return false; }
};
