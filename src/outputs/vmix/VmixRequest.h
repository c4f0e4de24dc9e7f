#pragma once

#include <QString>
#include <QUrl>

#include <cstdint>
#include <optional>

namespace orv {

/// Where a text goes: a field of a title that is an input of vMix.
struct VmixField {
    QString host; ///< A name, an IPv4 address, or an IPv6 address with or without brackets.
    std::int64_t port = 0;
    QString input; ///< Number or name.
    QString name;  ///< Of the text field.
};

/// What stands for a host in what a person has typed, who may have copied a whole address: scheme,
/// user, path and surrounding blanks are left out.
struct TypedHost {
    QString host;
    std::optional<std::int64_t> port = {}; ///< If one was typed with it.

    friend bool operator==(const TypedHost&, const TypedHost&) = default;
};

TypedHost typedHost(const QString& typed);

/// The address of vMix's web API that puts `text` into `field`. Values are percent-encoded but for
/// letters, digits and "-._~", half a surrogate pair as the replacement character. None if host and
/// port cannot stand in an address: a space or another sign that no host has, an empty host, a port
/// outside of 0 to 65535.
std::optional<QUrl> vmixUrl(const VmixField& field, const QString& text);

/// The line that tells of a translation that vMix has taken.
QString vmixUpdatedLine(const QString& translation);

} // namespace orv
