# The Debian packages that Orvane needs, in groups. The same names hold on Debian 12 and 13.
# Source it; it only defines variables. A group NAME is packages_NAME; what stands in extras_NAME is
# nice to have, and left out where it does not exist.

# The companion speech server: Python, the built-in recogniser and translator.
packages_backend=(
  python3 python3-venv python3-websockets python3-numpy libpocketsphinx3 pocketsphinx-en-us
  apertium apertium-eng-spa
)

# Building and running the program.
packages_run=(
  g++ cmake ninja-build ccache pkg-config
  qt6-base-dev qt6-base-dev-tools qt6-websockets-dev qt6-svg-dev qt6-translations-l10n
  qt6-speech-dev qt6-declarative-dev qt6-speech-speechd-plugin qt6-speech-flite-plugin
  qcoro-qt6-dev libsoxr-dev libpulse-dev libfontconfig-dev libicu-dev libxcb1-dev
  lsof speech-dispatcher speech-dispatcher-espeak-ng espeak-ng pulseaudio-utils x11-utils
  fonts-dejavu-core
  "${packages_backend[@]}"
)
# The panel's texts and the languages' flags are drawn with it.
extras_run=(fonts-noto-color-emoji)

# A desktop with sound for machines that have none, and recorded speech for it.
packages_demo=(
  xvfb openbox trayer xdotool imagemagick dbus dbus-x11 at-spi2-core python3-gi gir1.2-atspi-2.0
  pulseaudio pocketsphinx-testdata
)
# A second opinion on the word error rate.
extras_demo=(sctk)

# What the tests use beside: letters of all languages, another kind of desktop, peers that others wrote,
# judges.
packages_test=(
  fonts-noto-core fonts-noto-cjk
  git libgtest-dev libgmock-dev picom python3-xlib iproute2 procps openssl curl
  sox ffmpeg liblo-tools chromium nginx-light
)
extras_test=()

# Layout, habits and fuzzing.
packages_checks=(git clang clang-format clang-tidy libclang-rt-dev)
extras_checks=()

# Measuring.
packages_bench=(libbenchmark-dev nginx-light wrk)
extras_bench=()

package_groups=(backend run demo test checks bench)
extras_backend=()

# For those whose system has none of these packages.
needed_in_words="Orvane is built with a C++20 compiler, CMake 3.25, Ninja, pkg-config, Qt 6.4 or newer (Core, \
Gui, Network, WebSockets, Widgets, Svg, DBus, TextToSpeech, with their headers), QCoro for Qt 6, and the \
libraries soxr, PulseAudio (client), fontconfig, ICU and xcb; it runs with lsof, speech-dispatcher and Python 3.11 \
or newer with venv, websockets and numpy, PocketSphinx with its US English model, and Apertium with its \
English-Spanish pair. Where all that is there, ORVANE_PACKAGES=mine lets the scripts install nothing."
