#include "uCountries.h"

#include <QCollator>
#include <QFile>
#include <QFileInfo>
#include <QHash>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>

using namespace Qt::StringLiterals;

QList<TCountry> LoadCountries(const QString& jsonPath, const QString& flagsDir)
{
    QFile file(jsonPath);
    if (!file.open(QIODevice::ReadOnly)) {
        return {};
    }
    const QJsonDocument doc = QJsonDocument::fromJson(file.readAll());
    const QJsonArray entries = doc.object().value(u"3166-1"_s).toArray();

    QList<TCountry> countries;
    countries.reserve(entries.size());
    for (const QJsonValue& value : entries) {
        const QJsonObject entry = value.toObject();
        const QString code = entry.value(u"alpha_2"_s).toString().toUpper();
        QString name = entry.value(u"common_name"_s).toString();
        if (name.isEmpty()) {
            name = entry.value(u"name"_s).toString();
        }
        if (code.size() != 2 || !code.at(0).isLetter() || !code.at(1).isLetter() || name.isEmpty()) {
            continue;
        }
        const QString flag = flagsDir + u'/' + code.toLower() + u".png"_s;
        countries.append({code, name, QFileInfo::exists(flag) ? flag : QString()});
    }

    QCollator collator{QLocale(QLocale::English)};
    collator.setCaseSensitivity(Qt::CaseInsensitive);
    std::stable_sort(countries.begin(), countries.end(), [&collator](const TCountry& a, const TCountry& b) {
        return collator.compare(a.Name, b.Name) < 0;
    });
    return countries;
}

const QList<TCountry>& Countries()
{
    static const QList<TCountry> countries =
        LoadCountries(QString::fromLatin1(cCountriesFile), QString::fromLatin1(cCountryFlagsDir));
    return countries;
}

QString CountryName(const QString& code)
{
    static const QHash<QString, QString> names = [] {
        QHash<QString, QString> map;
        for (const TCountry& country : Countries()) {
            map.insert(country.Code, country.Name);
        }
        return map;
    }();
    return names.value(code.toUpper());
}
