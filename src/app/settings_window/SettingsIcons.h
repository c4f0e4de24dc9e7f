#pragma once

namespace orv {

/// Makes the pictures of the settings window known as symbols, beside those of the style:
/// "waveform", "waveform.badge.mic", "bolt.horizontal", "bolt.fill", "cloud", "cloud.bolt",
/// "cloud.fill", "server.rack", "globe", "cpu", "internaldrive", "checkmark.circle". Harmless to
/// call again.
void registerSettingsIcons();

} // namespace orv
