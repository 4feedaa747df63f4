#include "Widgets/CCatalogueTranslator.h"

#include "Core/Localize.h"

QString CCatalogueTranslator::translate(const char* /*contextZ*/, const char* textZ, const char* /*disambiguationZ*/,
                                        int /*number*/) const {
    const QString text = QString::fromStdString(Localize(textZ));
    return text == QString::fromUtf8(textZ) ? QString() : text;   // the toolkit goes on to its own catalogues
}
