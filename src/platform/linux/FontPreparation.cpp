#include "FontPreparation.h"

#include <fontconfig/fontconfig.h>
#include <pthread.h>

namespace orv {

FontPreparation::FontPreparation()
    : thread_([] { FcInit(); }) {
    ::pthread_setname_np(thread_.native_handle(), "fonts");
}

FontPreparation::~FontPreparation() {
    thread_.join();
}

} // namespace orv
