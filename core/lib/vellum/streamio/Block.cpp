// Block.cpp - building, writing and looking into block trees.
#include "core/lib/vellum/streamio/Block.h"

#include <charconv>
#include <cmath>
#include <cstring>
#include <limits>
#include <stdexcept>
#include <string_view>
#include <unordered_set>
#include <utility>

namespace io
{
const AString& CBlock_item::Name() const
{
    static const AString none;
    return none;
}

// ------------------------------------------------------------------ values

bool CBlock_value::Query(int& value) const
{
    switch (m_Kind)
    {
    case k_Int:
        value = m_Int;
        return true;
    case k_Double:
        if (std::isfinite(m_Double) && m_Double == std::trunc(m_Double) && std::fabs(m_Double) < 2147483648.0)
        {
            value = static_cast<int>(m_Double);
            return true;
        }
        return false;
    case k_Bool:
        value = m_Bool ? 1 : 0;
        return true;
    case k_String:
    {
        long number = 0;
        if (m_Text.IsNumber(number, 10) && number >= -2147483647L - 1 && number <= 2147483647L)
        {
            value = static_cast<int>(number);
            return true;
        }
        return false;
    }
    default:
        return false;
    }
}

bool CBlock_value::Query(double& value) const
{
    switch (m_Kind)
    {
    case k_Int:
        value = m_Int;
        return true;
    case k_Double:
        value = m_Double;
        return true;
    case k_String:
    {
        const std::string text = m_Text.AsAnsi().str();
        double parsed = 0.0;
        const auto result = std::from_chars(text.data(), text.data() + text.size(), parsed);
        if (result.ec != std::errc() || result.ptr != text.data() + text.size() || text.empty())
            return false;
        value = parsed;
        return true;
    }
    default:
        return false;
    }
}

bool CBlock_value::Query(AString& value) const
{
    switch (m_Kind)
    {
    case k_String:
        value = m_Text;
        return true;
    case k_Int:
        value.Format(L"%d", m_Int);
        return true;
    case k_Double:
        value = AString(FormatDouble_G(m_Double, 10).c_str());
        return true;
    case k_Bool:
        value = m_Bool ? L"true" : L"false";
        return true;
    default:
        return false;
    }
}

bool CBlock_value::Query(bool& value) const
{
    if (m_Kind != k_Bool)
        return false;
    value = m_Bool;
    return true;
}

bool CBlock_value::operator==(const CBlock_value& other) const
{
    if (m_Kind != other.m_Kind)
        return false;
    switch (m_Kind)
    {
    case k_String:
        return m_Text == other.m_Text;
    case k_Int:
        return m_Int == other.m_Int;
    case k_Double:
        return m_Double == other.m_Double;
    case k_Bool:
        return m_Bool == other.m_Bool;
    default:
        return true;
    }
}

void CBlock_value::write(CAbstract_ostream& out) const
{
    switch (m_Kind)
    {
    case k_String:
        out.PutQuoted(m_Text);
        break;
    case k_Int:
        out.PutInt(m_Int);
        break;
    case k_Double:
        out.PutDouble(m_Double);
        break;
    case k_Bool:
        out.PutBool(m_Bool);
        break;
    default:
        out.PutQuoted(AString());
        break;
    }
}

void CBlock_named_value::write(CAbstract_ostream& out) const
{
    out.PutText(m_Name);
    out.PutRaw("=");
    m_Value.write(out);
}

// ------------------------------------------------------------ text sharing

namespace
{
struct TextHash
{
    using is_transparent = void;
    size_t operator()(std::wstring_view text) const { return std::hash<std::wstring_view>()(text); }
    size_t operator()(const CBlock_value* value) const { return (*this)(std::wstring_view(value->Text())); }
};
struct TextEqual
{
    using is_transparent = void;
    static std::wstring_view View(std::wstring_view text) { return text; }
    static std::wstring_view View(const CBlock_value* value) { return value->Text(); }
    template <class A, class B> bool operator()(const A& a, const B& b) const { return View(a) == View(b); }
};

thread_local CBlock_text_sharing* t_CurrentSharing = nullptr;
} // namespace

struct CBlock_text_sharing::Table
{
    std::unordered_set<CBlock_value*, TextHash, TextEqual> m_Values;
};

CBlock_text_sharing::CBlock_text_sharing() : m_Table(new Table), m_Outer(t_CurrentSharing)
{
    t_CurrentSharing = this;
}

CBlock_text_sharing::~CBlock_text_sharing()
{
    t_CurrentSharing = m_Outer;
    for (CBlock_value* value : m_Table->m_Values)
        if (value->Decrement() == 0)
            delete value;
    delete m_Table;
}

size_t CBlock_text_sharing::size() const
{
    return m_Table->m_Values.size();
}

CBlock_value* CBlock_text_sharing::TextValue(const AString& text)
{
    if (!t_CurrentSharing)
        return new CBlock_value(text);
    auto& values = t_CurrentSharing->m_Table->m_Values;
    const auto found = values.find(std::wstring_view(text));
    if (found != values.end())
        return *found;
    CBlock_value* value = new CBlock_value(text);
    value->Increment();
    values.insert(value);
    return value;
}

// --------------------------------------------------------------- functions

CBlock_func::CBlock_func(const AString& name) : m_NameItem(CBlock_text_sharing::TextValue(name))
{
    m_NameItem->Increment();
}

CBlock_func::CBlock_func(const CBlock_ptr<CBlock_value>& name) : m_NameItem(name.Item())
{
    if (m_NameItem)
        m_NameItem->Increment();
}

CBlock_func::CBlock_func(CBlock_func&& other) noexcept
    : CBlock_item(other), m_NameItem(std::exchange(other.m_NameItem, nullptr)),
      m_Slots(std::exchange(other.m_Slots, nullptr)), m_Count(std::exchange(other.m_Count, 0)),
      m_Capacity(std::exchange(other.m_Capacity, 0)), m_ReadIndex(std::exchange(other.m_ReadIndex, 0))
{
}

CBlock_func::CBlock_func(const CBlock_func& other) : CBlock_item(other), m_NameItem(other.m_NameItem)
{
    if (m_NameItem)
        m_NameItem->Increment();
    Reserve(other.m_Count);
    for (std::uint32_t i = 0; i < other.m_Count; ++i)
    {
        const CBlock_value::Kind kind = other.Kinds()[i];
        Slot& slot = Append(kind);
        slot = other.m_Slots[i];
        if (kind == CBlock_value::k_Empty)
            slot.m_Item->Increment();
    }
}

CBlock_func& CBlock_func::operator=(const CBlock_func& other)
{
    if (this == &other)
        return *this;
    CBlock_func copy(other);
    ReleaseAll();
    std::swap(m_NameItem, copy.m_NameItem);
    std::swap(m_Slots, copy.m_Slots);
    std::swap(m_Count, copy.m_Count);
    std::swap(m_Capacity, copy.m_Capacity);
    m_ReadIndex = 0;
    return *this;
}

CBlock_func::~CBlock_func()
{
    ReleaseAll();
}

const AString& CBlock_func::Name() const
{
    return m_NameItem ? m_NameItem->Text() : CBlock_item::Name();
}

void CBlock_func::ReleaseAll()
{
    for (std::uint32_t i = 0; i < m_Count; ++i)
        if (Kinds()[i] == CBlock_value::k_Empty && m_Slots[i].m_Item->Decrement() == 0)
            delete m_Slots[i].m_Item;
    ::operator delete(m_Slots);
    m_Slots = nullptr;
    m_Count = m_Capacity = 0;
    if (m_NameItem && m_NameItem->Decrement() == 0)
        delete m_NameItem;
    m_NameItem = nullptr;
}

void CBlock_func::Reserve(std::uint32_t capacity)
{
    if (capacity <= m_Capacity)
        return;
    constexpr size_t perSlot = sizeof(Slot) + sizeof(CBlock_value::Kind);
    Slot* slots = static_cast<Slot*>(::operator new(size_t(capacity) * perSlot));
    if (m_Count > 0)
    {
        std::memcpy(slots, m_Slots, m_Count * sizeof(Slot));
        std::memcpy(reinterpret_cast<CBlock_value::Kind*>(slots + capacity), Kinds(), m_Count);
    }
    ::operator delete(m_Slots);
    m_Slots = slots;
    m_Capacity = capacity;
}

CBlock_func::Slot& CBlock_func::Append(CBlock_value::Kind kind)
{
    if (m_Count == m_Capacity)
    {
        if (m_Capacity > std::numeric_limits<std::uint32_t>::max() / 2)
            throw std::length_error("CBlock_func: too many arguments");
        // Most functions have two to eight arguments.
        Reserve(m_Capacity < 2 ? 2 : m_Capacity * 2);
    }
    Kinds()[m_Count] = kind;
    Slot& slot = m_Slots[m_Count++];
    slot.m_Double = 0.0;
    return slot;
}

void CBlock_func::AddItem(CBlock_item* item)
{
    item->Increment();
    Append(CBlock_value::k_Empty).m_Item = item;
}

CBlock_func& CBlock_func::operator<<(const AString& text)
{
    AddItem(CBlock_text_sharing::TextValue(text));
    return *this;
}

CBlock_func& CBlock_func::operator<<(const wchar_t* text)
{
    AddItem(CBlock_text_sharing::TextValue(AString(text)));
    return *this;
}

CBlock_func& CBlock_func::operator<<(const int& value)
{
    Append(CBlock_value::k_Int).m_Int = value;
    return *this;
}

CBlock_func& CBlock_func::operator<<(const double& value)
{
    Append(CBlock_value::k_Double).m_Double = value;
    return *this;
}

CBlock_func& CBlock_func::operator<<(const bool& value)
{
    Append(CBlock_value::k_Bool).m_Bool = value;
    return *this;
}

CBlock_func& CBlock_func::operator<<(const CBlockFuncPtr& nested)
{
    if (nested.Item())
        AddItem(nested.Item());
    return *this;
}

CBlock_func& CBlock_func::operator<<(const CBlock_func& nested)
{
    AddItem(new CBlock_func(nested));
    return *this;
}

CBlock_func& CBlock_func::operator<<(CBlock_func&& nested)
{
    AddItem(new CBlock_func(std::move(nested)));
    return *this;
}

CBlock_func& CBlock_func::operator<<(const CBlock_named_value& named)
{
    AddItem(new CBlock_named_value(named));
    return *this;
}

CBlock_func& CBlock_func::operator<<(const CBlock_ptr<CBlock_value>& shared)
{
    if (shared.Item())
        AddItem(shared.Item());
    return *this;
}

CBlock_value CBlock_func::GetArgumentValue(size_t index) const
{
    if (index >= m_Count)
        return CBlock_value();
    const Slot& arg = m_Slots[index];
    switch (Kinds()[index])
    {
    case CBlock_value::k_Int:
        return CBlock_value(arg.m_Int);
    case CBlock_value::k_Double:
        return CBlock_value(arg.m_Double);
    case CBlock_value::k_Bool:
        return CBlock_value(arg.m_Bool);
    default:
        if (arg.m_Item->IsValue())
            return *static_cast<const CBlock_value*>(arg.m_Item);
        return CBlock_value();
    }
}

CBlock_item* CBlock_func::GetArgumentItem(size_t index) const
{
    if (index >= m_Count || Kinds()[index] != CBlock_value::k_Empty)
        return nullptr;
    return m_Slots[index].m_Item;
}

CBlock_func& CBlock_func::operator>>(AString& text)
{
    if (m_ReadIndex < m_Count)
        GetArgumentValue(m_ReadIndex++).Query(text);
    return *this;
}

CBlock_func& CBlock_func::operator>>(double& value)
{
    if (m_ReadIndex < m_Count)
        GetArgumentValue(m_ReadIndex++).Query(value);
    return *this;
}

CBlock_func& CBlock_func::operator>>(int& value)
{
    if (m_ReadIndex < m_Count)
        GetArgumentValue(m_ReadIndex++).Query(value);
    return *this;
}

void CBlock_func::write(CAbstract_ostream& out) const
{
    out.PutText(Name());
    out.PutRaw("(");
    for (std::uint32_t i = 0; i < m_Count; ++i)
    {
        if (i > 0)
            out.PutRaw(", ");
        const Slot& arg = m_Slots[i];
        switch (Kinds()[i])
        {
        case CBlock_value::k_Int:
            out.PutInt(arg.m_Int);
            break;
        case CBlock_value::k_Double:
            out.PutDouble(arg.m_Double);
            break;
        case CBlock_value::k_Bool:
            out.PutBool(arg.m_Bool);
            break;
        default:
            arg.m_Item->write(out);
            break;
        }
    }
    out.PutRaw(")");
}

// ------------------------------------------------------------------ blocks

CBlock& CBlock::Add(const CBlock_ptr<CBlock_item>& child)
{
    if (child)
        m_Children.push_back(child);
    return *this;
}

CBlock& CBlock::operator<<(const CBlockPtr& child)
{
    return Add(CBlock_ptr<CBlock_item>(child.Item()));
}
CBlock& CBlock::operator<<(const CBlockFuncPtr& child)
{
    return Add(CBlock_ptr<CBlock_item>(child.Item()));
}
CBlock& CBlock::operator<<(const CBlock_func& child)
{
    return Add(CBlock_ptr<CBlock_item>(new CBlock_func(child)));
}
CBlock& CBlock::operator<<(const CBlock_named_value& child)
{
    return Add(CBlock_ptr<CBlock_item>(new CBlock_named_value(child)));
}
CBlock& CBlock::operator<<(const CBlock_value& child)
{
    return Add(CBlock_ptr<CBlock_item>(new CBlock_value(child)));
}

const CBlock_named_value* CBlock::FindNamedValue(const AString& name) const
{
    for (const auto& child : m_Children)
        if (child->IsNamedValue() && child->Name() == name)
            return static_cast<const CBlock_named_value*>(child.Item());
    return nullptr;
}

CBlock& CBlock::operator>>(CBlock_named_value& named)
{
    const CBlock_named_value* found = FindNamedValue(named.Name());
    m_QueryOk = found != nullptr;
    if (found)
        named = *found;
    return *this;
}

namespace
{
void WriteBlockBegin(CAbstract_ostream& out, const AString& name)
{
    out.PutIndent();
    out.PutRaw("$begin ");
    out.PutQuoted(name);
    out.PutNewLine();
    out.Indent(1);
}

// A nested block writes its own lines; any other child stands on a line of
// its own.
void WriteBlockChild(CAbstract_ostream& out, const CBlock_item& child)
{
    if (child.IsBlock())
    {
        child.write(out);
        return;
    }
    out.PutIndent();
    child.write(out);
    out.PutNewLine();
}

void WriteBlockEnd(CAbstract_ostream& out, const AString& name)
{
    out.Indent(-1);
    out.PutIndent();
    out.PutRaw("$end ");
    out.PutQuoted(name);
    out.PutNewLine();
}
} // namespace

void CBlock::write(CAbstract_ostream& out) const
{
    WriteBlockBegin(out, m_Name);
    for (const auto& child : m_Children)
        WriteBlockChild(out, *child);
    WriteBlockEnd(out, m_Name);
}

// ------------------------------------------------------------ block streams

CBlock_stream::CBlock_stream(CAbstract_ostream& out, const AString& name) : m_Out(out), m_Name(name)
{
    WriteBlockBegin(m_Out, m_Name);
}

CBlock_stream::CBlock_stream(CBlock_stream& parent, const AString& name) : CBlock_stream(parent.m_Out, name)
{
}

CBlock_stream& CBlock_stream::operator<<(const CBlockPtr& child)
{
    if (child && m_Open)
        WriteBlockChild(m_Out, *child);
    return *this;
}

CBlock_stream& CBlock_stream::operator<<(const CBlock_func& child)
{
    if (m_Open)
        WriteBlockChild(m_Out, child);
    return *this;
}

CBlock_stream& CBlock_stream::operator<<(const CBlock_named_value& child)
{
    if (m_Open)
        WriteBlockChild(m_Out, child);
    return *this;
}

void CBlock_stream::Close()
{
    if (!m_Open)
        return;
    m_Open = false;
    WriteBlockEnd(m_Out, m_Name);
}

} // namespace io
