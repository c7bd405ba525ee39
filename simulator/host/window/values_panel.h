#pragma once

#include "simulator/host/window/live_panel.h"
#include "simulator/host/window/named_values.h"

#include <functional>

namespace pictara {
/// A live table of named values with a field that narrows it to the names wanted.
class ValuesPanel : public LivePanel {
public:
    using Read = std::function<NamedValues::Values()>;

    /// `read` gives the values as they are now; what it stands on outlives the panel.
    ValuesPanel(QString const& toolTip, Read read, QWidget* parent = nullptr);
    void refresh(quint64 frame) override;
    [[nodiscard]] bool tellsChanges() const override { return true; }

private:
    Read m_read;
    NamedValues m_values;
};
} // namespace pictara
