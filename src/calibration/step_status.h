#pragma once

#include "calibration/page_state.h"
#include "wizard/bullets.h"

#include <QString>
#include <optional>

/// What a step shows: its status text and bullet, and while it runs its progress in place of the text.
struct StepStatus {
    QString text;
    Bullet bullet = Bullet::Gray;
    std::optional<int> progress; ///< per cent, while a progress bar covers the text
};

/// What the steps that both pages share show.
[[nodiscard]] StepStatus setupStatus(PageState const& state);
[[nodiscard]] StepStatus exposureStatus(PageState const& state);
[[nodiscard]] StepStatus colourBalanceStatus(PageState const& state);
[[nodiscard]] StepStatus calibrationStatus(PageState const& state);
[[nodiscard]] StepStatus uniformityStatus(PageState const& state);
/// Shows `savedPath` as it stands: the page cuts it to the bare file name first.
[[nodiscard]] StepStatus fileStatus(PageState const& state);
[[nodiscard]] StepStatus eepromStatus(PageState const& state);
