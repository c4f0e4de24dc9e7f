// What cloud services refuse or fail with, by its codes: see ServiceFault.h.
#include "StringTable.h"

namespace orv {

std::span<const TextEntry> englishServiceTexts() {
    static constexpr TextEntry entries[] = {
        {u"service.key_missing", u"{engine}: the key is missing\nEnter it in Settings → Engines."},
        {u"service.key_refused",
         u"{engine} refuses the key\nCheck it in Settings → Engines: it may be wrong, expired, or "
         u"meant for another service or region. {said}"},
        {u"service.region_missing",
         u"{engine}: the region is missing\nChoose it in Settings → Engines."},
        {u"service.no_credit", u"{engine}: the account has no credit left\nTop it up with the "
                               u"service, or choose another engine in Settings → Engines. {said}"},
        {u"service.not_allowed",
         u"{engine} does not allow this account\nSwitch the service on for your project or plan, "
         u"or choose another engine in Settings → Engines. {said}"},
        {u"service.quota", u"{engine}: the quota is used up\nWait, raise it with the service, or "
                           u"choose another engine in Settings → Engines. {said}"},
        {u"service.too_many", u"{engine}: too many requests at once\nIt goes on by itself as soon "
                              u"as the service takes more. {said}"},
        {u"service.language", u"{engine} does not recognize this language\nChoose another "
                              u"language, or another engine in Settings → Engines. {said}"},
        {u"service.refused", u"{engine} refuses the request\nChoose another engine in Settings → "
                             u"Engines if that goes on. {said}"},
        {u"service.network", u"{engine} cannot be reached\nCheck the network. {said}"},
        {u"service.timed_out",
         u"{engine} does not answer\nCheck the network; what is said meanwhile may be lost."},
        {u"service.failed",
         u"{engine} has a fault of its own\nIt goes on once the service works again. {said}"},
        {u"service.unreadable", u"What answers in place of {engine} is something else\nPerhaps the "
                                u"network wants you to sign in first: open any page in a browser."},
        {u"service.not_translated",
         u"{engine} recognizes, but does not translate\nThe key does not include translation. Use "
         u"a key for several services, or enter a Google key in Settings → Engines."},
        {u"service.too_slow", u"{engine} does not keep up\nWhat had waited for too long was left "
                              u"out, to stay with what is being said: {said}. Check the network."},
    };
    return entries;
}

} // namespace orv
