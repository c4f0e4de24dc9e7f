#include "LanguageManager.h"

#include <iterator>

namespace orv {

namespace {

struct Row {
    QStringView code;
    QStringView name;
    QStringView flag;
};

// Deliberate: English carries the British flag, Catalan, Basque and Galician the Spanish one,
// Breton and Occitan the French one, Hebrew and Yiddish the Israeli one; Javanese is "jw", the code
// the recognisers use, Armenian stands in Latin letters, and Norwegian occurs twice.
constexpr Row rows[] = {
    {u"de", u"Deutsch", u"🇩🇪"},
    {u"en", u"English", u"🇬🇧"},
    {u"es", u"Español", u"🇪🇸"},
    {u"fr", u"Français", u"🇫🇷"},
    {u"it", u"Italiano", u"🇮🇹"},
    {u"pt", u"Português", u"🇵🇹"},
    {u"nl", u"Nederlands", u"🇳🇱"},
    {u"pl", u"Polski", u"🇵🇱"},
    {u"ru", u"Русский", u"🇷🇺"},
    {u"uk", u"Українська", u"🇺🇦"},
    {u"tr", u"Türkçe", u"🇹🇷"},
    {u"el", u"Ελληνικά", u"🇬🇷"},
    {u"zh", u"中文", u"🇨🇳"},
    {u"ja", u"日本語", u"🇯🇵"},
    {u"ko", u"한국어", u"🇰🇷"},
    {u"ar", u"العربية", u"🇸🇦"},
    {u"hi", u"हिन्दी", u"🇮🇳"},
    {u"he", u"עברית", u"🇮🇱"},
    {u"th", u"ไทย", u"🇹🇭"},
    {u"vi", u"Tiếng Việt", u"🇻🇳"},
    {u"id", u"Bahasa Indonesia", u"🇮🇩"},
    {u"ms", u"Bahasa Melayu", u"🇲🇾"},
    {u"sv", u"Svenska", u"🇸🇪"},
    {u"da", u"Dansk", u"🇩🇰"},
    {u"no", u"Norsk", u"🇳🇴"},
    {u"fi", u"Suomi", u"🇫🇮"},
    {u"cs", u"Čeština", u"🇨🇿"},
    {u"sk", u"Slovenčina", u"🇸🇰"},
    {u"hu", u"Magyar", u"🇭🇺"},
    {u"ro", u"Română", u"🇷🇴"},
    {u"bg", u"Български", u"🇧🇬"},
    {u"hr", u"Hrvatski", u"🇭🇷"},
    {u"sr", u"Српски", u"🇷🇸"},
    {u"sl", u"Slovenščina", u"🇸🇮"},
    {u"lt", u"Lietuvių", u"🇱🇹"},
    {u"lv", u"Latviešu", u"🇱🇻"},
    {u"et", u"Eesti", u"🇪🇪"},
    {u"ca", u"Català", u"🇪🇸"},
    {u"eu", u"Euskara", u"🇪🇸"},
    {u"gl", u"Galego", u"🇪🇸"},
    {u"is", u"Íslenska", u"🇮🇸"},
    {u"mt", u"Malti", u"🇲🇹"},
    {u"lb", u"Lëtzebuergesch", u"🇱🇺"},
    {u"cy", u"Cymraeg", u"🏴󠁧󠁢󠁷󠁬󠁳󠁿"},
    {u"ga", u"Gaeilge", u"🇮🇪"},
    {u"sq", u"Shqip", u"🇦🇱"},
    {u"mk", u"Македонски", u"🇲🇰"},
    {u"bs", u"Bosanski", u"🇧🇦"},
    {u"be", u"Беларуская", u"🇧🇾"},
    {u"bn", u"বাংলা", u"🇧🇩"},
    {u"ta", u"தமிழ்", u"🇮🇳"},
    {u"te", u"తెలుగు", u"🇮🇳"},
    {u"ml", u"മലയാളം", u"🇮🇳"},
    {u"kn", u"ಕನ್ನಡ", u"🇮🇳"},
    {u"gu", u"ગુજરાતી", u"🇮🇳"},
    {u"mr", u"मराठी", u"🇮🇳"},
    {u"pa", u"ਪੰਜਾਬੀ", u"🇮🇳"},
    {u"ur", u"اردو", u"🇵🇰"},
    {u"fa", u"فارسی", u"🇮🇷"},
    {u"ne", u"नेपाली", u"🇳🇵"},
    {u"si", u"සිංහල", u"🇱🇰"},
    {u"km", u"ខ្មែរ", u"🇰🇭"},
    {u"lo", u"ລາວ", u"🇱🇦"},
    {u"my", u"မြန်မာ", u"🇲🇲"},
    {u"mn", u"Монгол", u"🇲🇳"},
    {u"bo", u"བོད་སྐད་", u"🇨🇳"},
    {u"tl", u"Tagalog", u"🇵🇭"},
    {u"jw", u"Basa Jawa", u"🇮🇩"},
    {u"su", u"Basa Sunda", u"🇮🇩"},
    {u"ka", u"ქართული", u"🇬🇪"},
    {u"hy", u"Hayeren", u"🇦🇲"},
    {u"az", u"Azərbaycanca", u"🇦🇿"},
    {u"kk", u"Қазақша", u"🇰🇿"},
    {u"uz", u"Oʻzbekcha", u"🇺🇿"},
    {u"tg", u"Тоҷикӣ", u"🇹🇯"},
    {u"tk", u"Türkmençe", u"🇹🇲"},
    {u"af", u"Afrikaans", u"🇿🇦"},
    {u"sw", u"Kiswahili", u"🇹🇿"},
    {u"am", u"አማርኛ", u"🇪🇹"},
    {u"yo", u"Yorùbá", u"🇳🇬"},
    {u"ha", u"Hausa", u"🇳🇬"},
    {u"sn", u"ChiShona", u"🇿🇼"},
    {u"so", u"Soomaali", u"🇸🇴"},
    {u"mg", u"Malagasy", u"🇲🇬"},
    {u"ht", u"Kreyòl ayisyen", u"🇭🇹"},
    {u"la", u"Latina", u"🇻🇦"},
    {u"haw", u"ʻŌlelo Hawaiʻi", u"🇺🇸"},
    {u"mi", u"Te Reo Māori", u"🇳🇿"},
    {u"yi", u"ייִדיש", u"🇮🇱"},
    {u"fo", u"Føroyskt", u"🇫🇴"},
    {u"br", u"Brezhoneg", u"🇫🇷"},
    {u"oc", u"Occitan", u"🇫🇷"},
    {u"sa", u"संस्कृतम्", u"🇮🇳"},
    {u"nn", u"Nynorsk", u"🇳🇴"},
    {u"tt", u"Татар", u"🇷🇺"},
    {u"ba", u"Башҡорт", u"🇷🇺"},
    {u"sd", u"سنڌي", u"🇵🇰"},
    {u"ps", u"پښتو", u"🇦🇫"},
    {u"as", u"অসমীয়া", u"🇮🇳"},
    {u"ln", u"Lingála", u"🇨🇩"},
    {u"yue", u"粵語", u"🇭🇰"},
};

QList<Language> makeLanguages() {
    QList<Language> languages;
    languages.reserve(std::size(rows));
    for (const Row& row : rows) {
        const QString code = row.code.toString();
        languages.append({code, code, row.name.toString(), row.flag.toString()});
    }
    return languages;
}

} // namespace

const QList<Language>& LanguageManager::allLanguages() {
    static const QList<Language> languages = makeLanguages();
    return languages;
}

} // namespace orv
