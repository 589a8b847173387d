// Block.cpp - building, writing and looking into block trees.
#include "core/lib/vellum/streamio/Block.h"

#include <charconv>
#include <cmath>

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

// --------------------------------------------------------------- functions

CBlock_func::CBlock_func(const CBlock_func& other)
    : CBlock_item(other), m_Name(other.m_Name), m_Args(other.m_Args)
{
    for (const Argument& arg : m_Args)
        if (arg.m_Kind == CBlock_value::k_Empty)
            arg.m_Item->Increment();
}

CBlock_func& CBlock_func::operator=(const CBlock_func& other)
{
    if (this == &other)
        return *this;
    CBlock_func copy(other);
    ReleaseAll();
    m_Name = copy.m_Name;
    m_Args.swap(copy.m_Args);
    m_ReadIndex = 0;
    return *this;
}

CBlock_func::~CBlock_func()
{
    ReleaseAll();
}

void CBlock_func::ReleaseAll()
{
    for (const Argument& arg : m_Args)
        if (arg.m_Kind == CBlock_value::k_Empty && arg.m_Item->Decrement() == 0)
            delete arg.m_Item;
    m_Args.clear();
}

void CBlock_func::AddItem(CBlock_item* item)
{
    Argument arg;
    arg.m_Kind = CBlock_value::k_Empty;
    arg.m_Item = item;
    item->Increment();
    m_Args.push_back(arg);
}

CBlock_func& CBlock_func::operator<<(const AString& text)
{
    AddItem(new CBlock_value(text));
    return *this;
}

CBlock_func& CBlock_func::operator<<(const wchar_t* text)
{
    AddItem(new CBlock_value(AString(text)));
    return *this;
}

CBlock_func& CBlock_func::operator<<(const int& value)
{
    Argument arg;
    arg.m_Kind = CBlock_value::k_Int;
    arg.m_Int = value;
    m_Args.push_back(arg);
    return *this;
}

CBlock_func& CBlock_func::operator<<(const double& value)
{
    Argument arg;
    arg.m_Kind = CBlock_value::k_Double;
    arg.m_Double = value;
    m_Args.push_back(arg);
    return *this;
}

CBlock_func& CBlock_func::operator<<(const bool& value)
{
    Argument arg;
    arg.m_Kind = CBlock_value::k_Bool;
    arg.m_Bool = value;
    m_Args.push_back(arg);
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
    if (index >= m_Args.size())
        return CBlock_value();
    const Argument& arg = m_Args[index];
    switch (arg.m_Kind)
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
    if (index >= m_Args.size() || m_Args[index].m_Kind != CBlock_value::k_Empty)
        return nullptr;
    return m_Args[index].m_Item;
}

CBlock_func& CBlock_func::operator>>(AString& text)
{
    if (m_ReadIndex < m_Args.size())
        GetArgumentValue(m_ReadIndex++).Query(text);
    return *this;
}

CBlock_func& CBlock_func::operator>>(double& value)
{
    if (m_ReadIndex < m_Args.size())
        GetArgumentValue(m_ReadIndex++).Query(value);
    return *this;
}

CBlock_func& CBlock_func::operator>>(int& value)
{
    if (m_ReadIndex < m_Args.size())
        GetArgumentValue(m_ReadIndex++).Query(value);
    return *this;
}

void CBlock_func::write(CAbstract_ostream& out) const
{
    out.PutText(m_Name);
    out.PutRaw("(");
    bool first = true;
    for (const Argument& arg : m_Args)
    {
        if (!first)
            out.PutRaw(", ");
        first = false;
        switch (arg.m_Kind)
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

void CBlock::write(CAbstract_ostream& out) const
{
    out.PutIndent();
    out.PutRaw("$begin ");
    out.PutQuoted(m_Name);
    out.PutNewLine();
    out.Indent(1);
    for (const auto& child : m_Children)
    {
        if (child->IsBlock())
        {
            child->write(out);
            continue;
        }
        out.PutIndent();
        child->write(out);
        out.PutNewLine();
    }
    out.Indent(-1);
    out.PutIndent();
    out.PutRaw("$end ");
    out.PutQuoted(m_Name);
    out.PutNewLine();
}

} // namespace io
