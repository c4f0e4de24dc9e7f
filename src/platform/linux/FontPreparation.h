#pragma once

#include <thread>

namespace orv {

/// The loading of the system's fonts on a thread of its own, so that the first window that shows a
/// text need not wait for it. Making one is all there is to do; destroying it waits
/// for the thread, which takes some ten milliseconds. Whoever needs fonts earlier loads them as
/// ever.
class FontPreparation {
  public:
    FontPreparation();
    ~FontPreparation();

    FontPreparation(const FontPreparation&) = delete;
    FontPreparation& operator=(const FontPreparation&) = delete;

  private:
    std::thread thread_;
};

} // namespace orv
