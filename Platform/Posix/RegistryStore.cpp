#include "RegistryStore.h"

namespace {

/// Takes the first part off a path; an empty path gives an empty part.
std::string_view TakePart(std::string_view & path)
{
    const std::size_t end = std::min(path.find('\\'), path.size());
    const std::string_view part = path.substr(0, end);
    path.remove_prefix(end < path.size() ? end + 1 : end);
    return part;
}

} // namespace

std::string Platform::FoldCase(std::string_view text)
{
    std::string folded(text);
    for (std::size_t i = 0; i < folded.size(); ++i) {
        const auto byte = static_cast<unsigned char>(folded[i]);
        if (byte >= 'A' && byte <= 'Z') {
            folded[i] = static_cast<char>(byte - 'A' + 'a');
        } else if (byte == 0xC3 && i + 1 < folded.size()) {
            // U+00C0 to U+00DE are capitals, but for the multiplication sign U+00D7; the small ones are 32 further.
            const auto next = static_cast<unsigned char>(folded[i + 1]);
            if (next >= 0x80 && next <= 0x9E && next != 0x97) folded[i + 1] = static_cast<char>(next + 0x20);
        }
    }
    return folded;
}

Platform::CRegistryNode const * Platform::CRegistryNode::Find(std::string_view path) const
{
    CRegistryNode const * node = this;
    while (!path.empty()) {
        const auto child = node->m_children.find(FoldCase(TakePart(path)));
        if (child == node->m_children.end()) return nullptr;
        node = child->second.get();
    }
    return node;
}

Platform::CRegistryNode & Platform::CRegistryNode::Make(std::string_view path)
{
    CRegistryNode * node = this;
    while (!path.empty()) {
        std::unique_ptr<CRegistryNode> & child = node->m_children[FoldCase(TakePart(path))];
        if (!child) child = std::make_unique<CRegistryNode>();
        node = child.get();
    }
    return *node;
}

void Platform::CRegistryNode::Remove(std::string_view path)
{
    CRegistryNode * node = this;
    std::string_view part = TakePart(path);
    while (!path.empty()) {
        const auto child = node->m_children.find(FoldCase(part));
        if (child == node->m_children.end()) return;
        node = child->second.get();
        part = TakePart(path);
    }
    node->m_children.erase(FoldCase(part));
}

void Platform::CRegistryNode::SetValue(std::string name, SRegistryValue value)
{
    const auto [place, added] = m_places.emplace(FoldCase(name), m_values.size());
    if (added)
        m_values.push_back(std::make_unique<SValue>(SValue{std::move(name), std::move(value)}));
    else
        m_values[place->second]->value = std::move(value);
}

void Platform::CRegistryNode::RemoveValue(std::string_view name)
{
    const auto place = m_places.find(FoldCase(name));
    if (place == m_places.end()) return;
    m_values[place->second].reset();
    m_places.erase(place);
}

Platform::SRegistryValue const * Platform::CRegistryNode::FindValue(std::string_view name) const
{
    const auto place = m_places.find(FoldCase(name));
    return place != m_places.end() ? &m_values[place->second]->value : nullptr;
}

Platform::CRegistryNode::SValue const * Platform::CRegistryNode::ValueAt(std::size_t index) const
{
    return index < m_values.size() ? m_values[index].get() : nullptr;
}

void Platform::CRegistryNode::Compact()
{
    std::erase_if(m_values, [](auto const & value) { return !value; });
    for (std::size_t i = 0; i < m_values.size(); ++i)
        m_places[FoldCase(m_values[i]->name)] = i;
    for (auto & [name, child] : m_children)
        child->Compact();
}
