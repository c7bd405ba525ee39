#pragma once

#include <QString>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace headboard_image {
/// Bytes of the usual device.
constexpr size_t kUsualImageSize = 8192;

/// The bytes of an image file, 8 to 65536; empty, with the reason in `error`, for any other file.
[[nodiscard]] std::optional<std::vector<uint8_t>> readImage(QString const& fileName, std::string* error);

/// Whether a file can be read at all; otherwise `error` holds the reason.
[[nodiscard]] bool isReadableFile(QString const& fileName, std::string* error);

/// Replaces the file in one step: whatever fails, it is the old or the new one. False, with the reason in
/// `error`, when it is the old one.
[[nodiscard]] bool writeImage(QString const& fileName, std::span<uint8_t const> image, std::string* error);
} // namespace headboard_image
