#pragma once

#include <algorithm>
#include <cstdint>
#include <optional>
#include <utility>
#include <vector>

#include "formats/tiff/ifdentry.h"

namespace tirn {

/// The entries of one directory by rising tag, one for each tag: of two with the same tag the first stays.
class IFD
{
public:
    IFD() = default;
    explicit IFD(std::vector<IFDEntry> entries) : m_entries(std::move(entries))
    {
        const auto before = [](const IFDEntry& a, const IFDEntry& b) { return a.tag < b.tag; };
        const auto same = [](const IFDEntry& a, const IFDEntry& b) { return a.tag == b.tag; };
        // Stable, so that the first of several with one tag is the first in the file.
        if (!std::is_sorted(m_entries.begin(), m_entries.end(), before))
            std::stable_sort(m_entries.begin(), m_entries.end(), before);
        m_entries.erase(std::unique(m_entries.begin(), m_entries.end(), same), m_entries.end());
    }

    /// Null when the tag is not there.
    const IFDEntry* find(std::uint16_t tag) const
    {
        const auto before = [](const IFDEntry& entry, std::uint16_t number) { return entry.tag < number; };
        const auto place = std::lower_bound(m_entries.begin(), m_entries.end(), tag, before);
        return place != m_entries.end() && place->tag == tag ? &*place : nullptr;
    }
    IFDEntry* find(std::uint16_t tag)
    {
        const IFDEntry* entry = std::as_const(*this).find(tag);
        return entry == nullptr ? nullptr : &m_entries[static_cast<std::size_t>(entry - m_entries.data())];
    }

    /// The first value of a tag, nothing when the tag is not there or holds none.
    std::optional<std::uint32_t> value(std::uint16_t tag) const
    {
        const IFDEntry* entry = find(tag);
        if (entry == nullptr || entry->values.empty())
            return std::nullopt;
        return entry->values.front();
    }

    auto begin() const { return m_entries.begin(); }
    auto end() const { return m_entries.end(); }
    std::size_t size() const { return m_entries.size(); }

private:
    std::vector<IFDEntry> m_entries;
};

} // namespace tirn
