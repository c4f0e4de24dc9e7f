#include "ServiceLocales.h"

#include <QHash>

using namespace Qt::StringLiterals;

namespace orv {

namespace {

using Locales = QHash<QString, QString>;

/// What both services call the same.
Locales commonLocales() {
    return {{u"de"_s, u"de-DE"_s},  {u"en"_s, u"en-US"_s}, {u"es"_s, u"es-ES"_s},
            {u"fr"_s, u"fr-FR"_s},  {u"it"_s, u"it-IT"_s}, {u"pt"_s, u"pt-PT"_s},
            {u"nl"_s, u"nl-NL"_s},  {u"pl"_s, u"pl-PL"_s}, {u"ru"_s, u"ru-RU"_s},
            {u"zh"_s, u"zh-CN"_s},  {u"ja"_s, u"ja-JP"_s}, {u"ko"_s, u"ko-KR"_s},
            {u"ar"_s, u"ar-SA"_s},  {u"hi"_s, u"hi-IN"_s}, {u"tr"_s, u"tr-TR"_s},
            {u"auto"_s, u"de-DE"_s}};
}

Locales azureLocales() {
    Locales locales = commonLocales();
    locales.insert({{u"sv"_s, u"sv-SE"_s},
                    {u"da"_s, u"da-DK"_s},
                    {u"no"_s, u"nb-NO"_s},
                    {u"fi"_s, u"fi-FI"_s},
                    {u"el"_s, u"el-GR"_s}});
    return locales;
}

QString localeFrom(const Locales& locales, const QString& code) {
    const auto found = locales.constFind(code);
    return found != locales.cend() ? *found : code + u"-"_s + code.toUpper();
}

} // namespace

QString azureLocale(const QString& code) {
    static const Locales locales = azureLocales();
    return localeFrom(locales, code);
}

QString googleLocale(const QString& code) {
    static const Locales locales = commonLocales();
    return localeFrom(locales, code);
}

bool isLanguageOf(const QString& code, const QString& locale) {
    return QStringView(locale).left(2) == code;
}

std::span<const ServiceRegion> azureRegions() {
    static const ServiceRegion regions[] = {
        {u"eastus"_s, u"East US (Virginia)"_s},
        {u"eastus2"_s, u"East US 2"_s},
        {u"centralus"_s, u"Central US"_s},
        {u"northcentralus"_s, u"North Central US"_s},
        {u"southcentralus"_s, u"South Central US"_s},
        {u"westus"_s, u"West US"_s},
        {u"westus2"_s, u"West US 2"_s},
        {u"westus3"_s, u"West US 3"_s},
        {u"canadacentral"_s, u"Canada Central"_s},
        {u"northeurope"_s, u"North Europe (Ireland)"_s},
        {u"westeurope"_s, u"West Europe (Netherlands)"_s},
        {u"uksouth"_s, u"UK South"_s},
        {u"francecentral"_s, u"France Central"_s},
        {u"germanywestcentral"_s, u"Germany West Central"_s},
        {u"switzerlandnorth"_s, u"Switzerland North"_s},
        {u"norwayeast"_s, u"Norway East"_s},
        {u"swedencentral"_s, u"Sweden Central"_s},
        {u"eastasia"_s, u"East Asia (Hong Kong)"_s},
        {u"southeastasia"_s, u"Southeast Asia (Singapore)"_s},
        {u"japaneast"_s, u"Japan East"_s},
        {u"japanwest"_s, u"Japan West"_s},
        {u"koreacentral"_s, u"Korea Central"_s},
        {u"australiaeast"_s, u"Australia East"_s},
        {u"centralindia"_s, u"Central India"_s},
        {u"southindia"_s, u"South India"_s},
        {u"uaenorth"_s, u"UAE North"_s},
        {u"southafricanorth"_s, u"South Africa North"_s},
        {u"brazilsouth"_s, u"Brazil South"_s},
    };
    return regions;
}

std::span<const ServiceRegion> googleLocations() {
    static const ServiceRegion locations[] = {
        {u"global"_s, u"Global"_s},
        {u"us-central1"_s, u"US Central (Iowa)"_s},
        {u"us-east1"_s, u"US East (South Carolina)"_s},
        {u"us-west1"_s, u"US West (Oregon)"_s},
        {u"europe-west1"_s, u"Europe West (Belgium)"_s},
        {u"europe-west4"_s, u"Europe West 4 (Netherlands)"_s},
        {u"europe-west3"_s, u"Europe West 3 (Frankfurt)"_s},
        {u"asia-southeast1"_s, u"Asia Southeast (Singapore)"_s},
        {u"asia-northeast1"_s, u"Asia Northeast (Tokyo)"_s},
        {u"asia-south1"_s, u"Asia South (Mumbai)"_s},
    };
    return locations;
}

} // namespace orv
