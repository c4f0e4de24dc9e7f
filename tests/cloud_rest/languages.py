"""Which languages each service knows, as it spells them.

One usual locale stands for each language; the services know further regions of some, which the
stand-ins refuse: what a program asks for is to be in this list.
"""

AZURE_SPEECH = frozenset(
    'af-ZA am-ET ar-SA as-IN az-AZ bg-BG bn-IN bs-BA ca-ES cs-CZ cy-GB da-DK de-DE el-GR en-US es-ES '
    'et-EE eu-ES fa-IR fi-FI fr-FR gl-ES gu-IN he-IL hi-IN hr-HR hu-HU hy-AM id-ID is-IS it-IT ja-JP '
    'jv-ID ka-GE kk-KZ km-KH kn-IN ko-KR lo-LA lt-LT lv-LV mk-MK ml-IN mn-MN mr-IN ms-MY mt-MT my-MM '
    'ne-NP nl-NL nb-NO pa-IN pl-PL ps-AF pt-BR pt-PT ro-RO ru-RU si-LK sk-SK sl-SI so-SO sq-AL sr-RS '
    'sv-SE sw-KE ta-IN te-IN th-TH fil-PH tr-TR uk-UA ur-IN uz-UZ vi-VN zh-HK yue-CN zh-CN zh-TW '
    'wuu-CN ga-IE or-IN zu-ZA'.split()
)

GOOGLE_SPEECH = frozenset(
    'af-ZA am-ET ar-SA az-AZ bg-BG bn-IN bs-BA ca-ES cs-CZ da-DK de-DE el-GR en-US es-ES et-EE eu-ES '
    'fa-IR fi-FI fr-FR gl-ES gu-IN iw-IL hi-IN hr-HR hu-HU hy-AM id-ID is-IS it-IT ja-JP jv-ID ka-GE '
    'kk-KZ km-KH kn-IN ko-KR lo-LA lt-LT lv-LV mk-MK ml-IN mn-MN mr-IN ms-MY my-MM ne-NP nl-NL no-NO '
    'pa-Guru-IN pl-PL pt-BR pt-PT ro-RO ru-RU si-LK sk-SK sl-SI sq-AL sr-RS su-ID sv-SE sw-KE ta-IN '
    'te-IN th-TH fil-PH tr-TR uk-UA ur-PK uz-UZ vi-VN yue-Hant-HK cmn-Hans-CN cmn-Hant-TW'.split()
)

AZURE_TRANSLATOR = frozenset(
    'af am ar as az ba bg bn bo bs ca cs cy da de el en es et eu fa fi fo fr gl gu ha he hi hr ht hu hy '
    'id is it ja ka kk km kn ko ln lo lt lv mg mi mk ml mn-Cyrl mr ms mt my nb ne nl pa pl ps pt pt-PT '
    'ro ru sd si sk sl sn so sq sr-Cyrl sr-Latn sv sw ta te th tk fil tr tt uk ur uz vi yo yue zh-Hans '
    'zh-Hant'.split()
)

# Two letters, or what has no two; nn, bo, fo and oc are not promised by the service and refused.
GOOGLE_TRANSLATE = frozenset(
    'af am ar as az ba be bg bn br bs ca cs cy da de el en es et eu fa fi fr gl gu ha haw he hi hr ht hu '
    'hy id is it ja jw ka kk km kn ko la lb ln lo lt lv mg mi mk ml mn mr ms mt my ne nl no pa pl ps pt '
    'ro ru sa sd si sk sl sn so sq sr su sv sw ta te tg th tk tl tr tt uk ur uz vi yi yo yue zh '
    'zh-CN zh-TW pt-BR pt-PT iw jv fil'.split()
)

AZURE_REGIONS = tuple(
    'southafricanorth eastasia southeastasia australiaeast centralindia japaneast japanwest '
    'koreacentral canadacentral canadaeast northeurope westeurope francecentral germanywestcentral '
    'italynorth norwayeast swedencentral switzerlandnorth switzerlandwest uksouth ukwest uaenorth '
    'brazilsouth qatarcentral centralus eastus eastus2 northcentralus southcentralus westcentralus '
    'westus westus2 westus3'.split()
)
