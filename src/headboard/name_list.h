#pragma once

#include <initializer_list>
#include <string>
#include <vector>

/// A list of register names that grows by patterns.
class NameList {
public:
    void add(std::initializer_list<std::string> names) { m_names.insert(m_names.end(), names); }

    /// `prefix` with each number from 0 to `count` - 1, of at least `digits` digits.
    void addNumbered(std::string const& prefix, int count, size_t digits = 1) {
        for (int i = 0; i < count; ++i) {
            std::string number = std::to_string(i);
            if (number.size() < digits)
                number.insert(0, digits - number.size(), '0');
            m_names.push_back(prefix + number);
        }
    }

    [[nodiscard]] std::vector<std::string> const& names() const { return m_names; }

private:
    std::vector<std::string> m_names;
};
