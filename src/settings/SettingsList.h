#pragma once

#include "AudioSourceType.h"
#include "RunningApp.h"
#include "Setting.h"

#include <QString>

#include <cstdint>
#include <optional>
#include <vector>

namespace orv {

using namespace Qt::StringLiterals;

/// The engine of those who never chose one.
inline const QString defaultSttEngine = u"whisper"_s;

/// The overlay server's port of those who never chose one.
inline constexpr std::int64_t defaultOverlayPort = 8077;

/// Every setting, one declaration each, in the order in which they are loaded. Adding one is adding
/// it here, and its row to docs/settings.md by `scripts/settings-table`.
///
/// Made as it is, the list holds the defaults and keeps nothing: `TranslationSettings` ties it to a
/// store.
class SettingsList {
  public:
    const std::vector<AnySetting*>& all() const { return all_; }

  private:
    std::vector<AnySetting*> all_; ///< Before the settings, which put themselves there.

  public:
    // Languages.
    /// The code of the interface's language; `L10n` knows what holds without one.
    Setting<QString> uiLanguage{all_,
                                {.key = u"uiLanguage"_s,
                                 .keeping = Keeping::OnAssignment,
                                 .note = {"Language of the interface", SettingPlace::General,
                                          "Interface Language", "the desktop's"}}};
    Setting<QString> sourceLang{all_,
                                {.key = u"sourceLang"_s,
                                 .initial = u"auto"_s,
                                 .registered = Registered<QString>{3, u"auto"_s},
                                 .takes = isNotEmpty,
                                 .note = {"Language spoken", SettingPlace::Panel, "From"}}};
    Setting<QString> targetLang{
        all_,
        {.key = u"targetLang"_s,
         .initial = u"de"_s,
         .registered = Registered<QString>{4, u"de"_s},
         .takes = isNotEmpty,
         .note = {"Language to translate into", SettingPlace::Panel, "To"}}};

    // The backend.
    Setting<bool> autoStartBackend{
        all_,
        {.key = u"autoStartBackend"_s,
         .initial = false,
         .registered = Registered<bool>{10, false},
         .keeping = Keeping::OnAssignment,
         .note = {"Start the backend with the program", SettingPlace::General,
                  "Start backend when the app starts"}}};
    Setting<bool> autoStopBackend{
        all_,
        {.key = u"autoStopBackend"_s,
         .initial = true,
         .registered = Registered<bool>{11, true},
         .keeping = Keeping::OnAssignment,
         .note = {"Stop the backend with the program", SettingPlace::General,
                  "Stop backend when the app quits"}}};
    Setting<bool> continueAfterInterruption{
        all_,
        {.key = u"continueAfterInterruption"_s,
         .keeping = Keeping::OnAssignment,
         .note = {"Go on by itself when a run was interrupted", SettingPlace::General,
                  "Continue by itself after an interruption"}}};

    // The subtitles.
    Setting<bool> showOverlay{
        all_,
        {.key = u"showOverlay"_s,
         .initial = true,
         .registered = Registered<bool>{1, true},
         .note = {"Subtitle window", SettingPlace::General, "Show subtitle window"}}};
    Setting<bool> showOriginal{
        all_,
        {.key = u"showOriginal"_s,
         .initial = false,
         .note = {"Source text in the subtitles", SettingPlace::General, "Show Original Text"}}};
    Setting<bool> overlayBorderEnabled{
        all_,
        {.key = u"overlayBorderEnabled"_s,
         .initial = true,
         .keeping = Keeping::OnAssignment,
         .note = {"Border of the subtitles", SettingPlace::General, "Show Border"}}};
    /// The colours are hexadecimal, with a leading "#".
    Setting<QString> overlayBgColor{
        all_,
        {.key = u"overlayBgColor"_s,
         .initial = u"#90EE90"_s,
         .keeping = Keeping::OnAssignment,
         .note = {"Ground of the subtitles", SettingPlace::General, "Background Color (#RRGGBB)"}}};
    Setting<QString> overlayTextColor{
        all_,
        {.key = u"overlayTextColor"_s,
         .initial = u"#000000"_s,
         .keeping = Keeping::OnAssignment,
         .note = {"Text of the subtitles", SettingPlace::General, "Text Color (#RRGGBB)"}}};
    Setting<QString> overlayBorderColor{
        all_,
        {.key = u"overlayBorderColor"_s,
         .initial = u"#2E7D32"_s,
         .keeping = Keeping::OnAssignment,
         .note = {"Colour of the border", SettingPlace::General, "Border Color (#RRGGBB)"}}};
    /// 0 to 1.
    Setting<double> overlayOpacity{
        all_,
        {.key = u"overlayOpacity"_s,
         .initial = 0.85,
         .keeping = Keeping::OnAssignment,
         .note = {"Opacity of the ground", SettingPlace::General, "Opacity"}}};

    // The page for browser sources.
    Setting<bool> obsOverlayEnabled{
        all_,
        {.key = u"obsOverlayEnabled"_s,
         .initial = false,
         .note = {"Browser overlay", SettingPlace::General, "Enable browser overlay"}}};
    Setting<std::int64_t> obsOverlayPort{
        all_,
        {.key = u"obsOverlayPort"_s,
         .initial = defaultOverlayPort,
         .takes = isPort,
         .note = {"Port of the browser overlay", SettingPlace::General,
                  "Browser Overlay (OBS): Port"}}};

    // VRChat.
    Setting<bool> vrchatEnabled{
        all_,
        {.key = u"vrchatEnabled"_s,
         .initial = false,
         .note = {"VRChat chatbox", SettingPlace::General, "Send subtitles to VRChat"}}};
    Setting<QString> vrchatHost{all_,
                                {.key = u"vrchatHost"_s,
                                 .initial = u"127.0.0.1"_s,
                                 .takes = isNotEmpty,
                                 .note = {"Computer that runs VRChat", SettingPlace::General,
                                          "VRChat Chatbox (OSC): Host"}}};
    Setting<std::int64_t> vrchatPort{
        all_,
        {.key = u"vrchatPort"_s,
         .initial = 9000,
         .takes = isPort,
         .note = {"VRChat's OSC port", SettingPlace::General, "VRChat Chatbox (OSC): Port"}}};
    /// 0 source text, 1 translation, 2 both.
    Setting<std::int64_t> vrchatSendMode{
        all_,
        {.key = u"vrchatSendMode"_s,
         .initial = 2,
         .note = {"What goes into the chatbox", SettingPlace::General,
                  "VRChat Chatbox (OSC): Send"}}};
    Setting<bool> vrchatPlaySound{
        all_,
        {.key = u"vrchatPlaySound"_s,
         .initial = false,
         .note = {"Sound of the chatbox", SettingPlace::General, "Play notification sound"}}};

    // A run.
    Setting<bool> saveTranscript{
        all_,
        {.initial = true,
         .keeping = Keeping::Never,
         .note = {"Transcript files", SettingPlace::General, "Save Transcript"}}};
    /// Deliberately another key than the field's name: files with it are in people's homes.
    Setting<bool> speakTranslation{
        all_,
        {.key = u"speakTranslations"_s,
         .initial = false,
         .registered = Registered<bool>{2, false},
         .note = {"Read translations aloud", SettingPlace::General, "Speak Translation"}}};

    // What is listened to.
    Setting<AudioSourceType> audioSourceType{
        all_,
        {.key = u"audioSourceType"_s,
         .initial = AudioSourceType::Microphone,
         .registered = Registered<AudioSourceType>{5, AudioSourceType::Microphone},
         .note = {"Kind of sound source", SettingPlace::Panel, "Source Type"}}};
    Setting<std::optional<QString>> selectedInputDevice{
        all_,
        {.key = u"selectedInputDevice"_s,
         .registered = Registered<std::optional<QString>>{6, QString()},
         .note = {"Microphone", SettingPlace::Panel, "Microphone"}}};
    Setting<std::optional<RunningApp>> selectedApp{all_, {.keeping = Keeping::Never}};
    Setting<std::optional<QString>> selectedAppBundleId{
        all_,
        {.key = u"selectedAppBundleId"_s,
         .registered = Registered<std::optional<QString>>{7, QString()},
         .note = {"Captured program", SettingPlace::Panel, "Select App"}}};
    /// A linear factor.
    Setting<float> audioGain{all_,
                             {.key = u"audioGain"_s,
                              .initial = 1.0F,
                              .registered = Registered<float>{8, 1.0F},
                              .takes = isPositive<float>,
                              .note = {"Gain", SettingPlace::Panel, "Gain"}}};
    /// Registered unlike its default: users start with automatic gain.
    Setting<bool> autoGain{all_,
                           {.key = u"autoGain"_s,
                            .initial = false,
                            .registered = Registered<bool>{9, true},
                            .note = {"Automatic gain", SettingPlace::General, "Auto Gain"}}};
    Setting<bool> vadEnabled{
        all_,
        {.key = u"vadEnabled"_s,
         .initial = true,
         .keeping = Keeping::OnAssignment,
         .note = {"Pause detection", SettingPlace::Panel, "Smart Pause Detection"}}};
    /// Milliseconds.
    Setting<double> vadSilenceDuration{
        all_,
        {.key = u"vadSilenceDuration"_s,
         .initial = 600,
         .takes = isPositive<double>,
         .keeping = Keeping::OnAssignment,
         .note = {"Silence that ends an utterance, ms", SettingPlace::Panel, "Pause Length"}}};
    /// dB.
    Setting<float> vadThreshold{
        all_,
        {.key = u"vadThreshold"_s,
         .initial = -35.0F,
         .takes = isNegative<float>,
         .keeping = Keeping::OnAssignment,
         .note = {"Level above which there is speech, dB", SettingPlace::Panel, "Threshold"}}};

    // Whisper and the backend's address.
    Setting<QString> whisperModel{
        all_,
        {.key = u"whisperModel"_s,
         .initial = u"base"_s,
         .takes = isNotEmpty,
         .note = {"Whisper model", SettingPlace::Whisper, "Current Model"}}};
    Setting<bool> networkAccess{
        all_,
        {.key = u"networkAccess"_s,
         .initial = false,
         .note = {"Let other devices reach the backend", SettingPlace::General,
                  "Allow network access (0.0.0.0)"}}};

    // vMix.
    Setting<bool> vmixEnabled{all_,
                              {.key = u"vmixEnabled"_s,
                               .initial = false,
                               .note = {"vMix title", SettingPlace::General, "Send to vMix"}}};
    Setting<QString> vmixHost{
        all_,
        {.key = u"vmixHost"_s,
         .initial = u"127.0.0.1"_s,
         .takes = isNotEmpty,
         .note = {"Computer that runs vMix", SettingPlace::General, "vMix: Host"}}};
    Setting<std::int64_t> vmixPort{all_,
                                   {.key = u"vmixPort"_s,
                                    .initial = 8088,
                                    .takes = isPort,
                                    .note = {"vMix's port", SettingPlace::General, "vMix: Port"}}};
    /// Its number or its name.
    Setting<QString> vmixInput{all_,
                               {.key = u"vmixInput"_s,
                                .initial = u"1"_s,
                                .takes = isNotEmpty,
                                .note = {"Input of vMix", SettingPlace::General,
                                         "vMix: Number or name of the vMix input"}}};
    Setting<QString> vmixFieldTranslation{
        all_,
        {.key = u"vmixFieldTranslation"_s,
         .initial = u"Translation"_s,
         .takes = isNotEmpty,
         .note = {"Title field for the translation", SettingPlace::General,
                  "vMix: Translation field"}}};
    Setting<QString> vmixFieldOriginal{all_,
                                       {.key = u"vmixFieldOriginal"_s,
                                        .initial = u"Original"_s,
                                        .takes = isNotEmpty,
                                        .note = {"Title field for the source text",
                                                 SettingPlace::General, "vMix: Original field"}}};
    Setting<bool> vmixShowConnectionWarnings{
        all_,
        {.key = u"vmixShowConnectionWarnings"_s,
         .initial = true,
         .note = {"Banner when vMix is not reached", SettingPlace::General,
                  "Warn on connection failures"}}};

    // The speech engines.
    /// The engine's identifier.
    Setting<QString> sttEngine{
        all_,
        {.key = u"sttEngine"_s,
         .initial = defaultSttEngine,
         .takes = isNotEmpty,
         .note = {"Speech engine", SettingPlace::Engines, "Speech Recognition Engine"}}};
    Setting<QString> deepgramApiKey{
        all_,
        {.key = u"deepgramApiKey"_s,
         .takes = isNotEmpty,
         .note = {"Key for Deepgram", SettingPlace::Engines, "Deepgram: API Key"}}};
    Setting<QString> assemblyaiApiKey{
        all_,
        {.key = u"assemblyaiApiKey"_s,
         .takes = isNotEmpty,
         .note = {"Key for AssemblyAI", SettingPlace::Engines, "AssemblyAI: API Key"}}};
    Setting<QString> googleApiKey{all_,
                                  {.key = u"googleApiKey"_s,
                                   .takes = isNotEmpty,
                                   .note = {"Key for Google's services", SettingPlace::Engines,
                                            "Google Cloud (REST): API Key"}}};
    Setting<QString> googleServiceAccountPath{
        all_,
        {.key = u"googleServiceAccountPath"_s,
         .takes = isNotEmpty,
         .note = {"Google service account", SettingPlace::Engines, "Service Account File (JSON)"}}};
    Setting<QString> googleProjectId{all_,
                                     {.key = u"googleProjectId"_s,
                                      .takes = isNotEmpty,
                                      .note = {"Google project", SettingPlace::Engines,
                                               "Google Cloud (gRPC streaming): Project ID"}}};
    Setting<QString> googleLocation{
        all_,
        {.key = u"googleLocation"_s,
         .initial = u"global"_s,
         .takes = isNotEmpty,
         .note = {"Location of Google's recognition", SettingPlace::Engines,
                  "Google Cloud (gRPC streaming): Location"}}};
    Setting<QString> azureApiKey{
        all_,
        {.key = u"azureApiKey"_s,
         .takes = isNotEmpty,
         .note = {"Key for Azure", SettingPlace::Engines, "Microsoft Azure: API Key"}}};
    Setting<QString> azureRegion{
        all_,
        {.key = u"azureRegion"_s,
         .initial = u"eastus"_s,
         .takes = isNotEmpty,
         .note = {"Region of Azure's services", SettingPlace::Engines, "Microsoft Azure: Region"}}};
    Setting<QString> voskHost{
        all_,
        {.key = u"voskHost"_s,
         .initial = u"localhost"_s,
         .takes = isNotEmpty,
         .note = {"Computer that runs Vosk", SettingPlace::Engines, "Vosk: Host"}}};
    Setting<std::int64_t> voskPort{all_,
                                   {.key = u"voskPort"_s,
                                    .initial = 2700,
                                    .takes = isPort,
                                    .note = {"Vosk's port", SettingPlace::Engines, "Vosk: Port"}}};
};

} // namespace orv
