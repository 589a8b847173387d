// Block.h - the block model: a tree of named items that stands for a whole
// text file.
//
// The neutral file is one such tree, built by the block writers and written
// either with one << or, block by block, through a CBlock_stream. Items are
// shared through counted pointers, so that a writer can keep changing an item
// after it was added to its parent. The text form is
//
//   $begin 'Name'              a block, its items indented one tab per level
//       Func(arg, arg, Nested(arg))
//       Name=value
//   $end 'Name'
//
// with strings in single quotes (\' and \\ escaped), whole numbers in
// decimal digits, doubles with the stream's significant digits, and bools as
// true and false. A function's name and a named value's name are written as
// given. The reader takes back every tree the writer writes, with the same
// names, kinds, order and texts, as long as a function's name holds none of
// the characters ( ) , = and a line end.
#pragma once

#include "core/lib/vellum/AString.h"
#include "core/lib/vellum/streamio/Stream.h"

#include <cstdint>
#include <utility>
#include <vector>

namespace io
{
class CBlock;
class CBlock_func;
class CBlock_value;
class CBlock_named_value;

// A child of a block or an argument of a function, reference-counted.
class CBlock_item : public CStreamio_object
{
public:
    CBlock_item() = default;
    CBlock_item(const CBlock_item&) : m_References(0) {}
    CBlock_item& operator=(const CBlock_item&) { return *this; }

    void Increment() { ++m_References; }
    int Decrement() { return --m_References; }
    bool InUse() const { return m_References > 0; }

    virtual bool IsBlock() const { return false; }
    virtual bool IsFunc() const { return false; }
    virtual bool IsValue() const { return false; }
    virtual bool IsNamedValue() const { return false; }
    virtual bool IsVec() const { return false; }
    virtual bool IsNamed() const { return false; }
    // The item's name; empty for a plain value.
    virtual const AString& Name() const;

private:
    int m_References = 0;
};

// Counted pointer to an item.
template <class T> class CBlock_ptr
{
public:
    CBlock_ptr() = default;
    explicit CBlock_ptr(T* item) : m_Item(item)
    {
        if (m_Item)
            m_Item->Increment();
    }
    CBlock_ptr(const CBlock_ptr& other) : CBlock_ptr(other.m_Item) {}
    template <class U> CBlock_ptr(const CBlock_ptr<U>& other) : CBlock_ptr(other.Item()) {}
    CBlock_ptr(CBlock_ptr&& other) noexcept : m_Item(std::exchange(other.m_Item, nullptr)) {}
    CBlock_ptr& operator=(CBlock_ptr other) noexcept
    {
        std::swap(m_Item, other.m_Item);
        return *this;
    }
    ~CBlock_ptr() { Release(); }

    T* Item() const { return m_Item; }
    T& operator*() const { return *m_Item; }
    T* operator->() const { return m_Item; }
    explicit operator bool() const { return m_Item != nullptr; }

private:
    void Release()
    {
        if (m_Item && m_Item->Decrement() == 0)
            delete m_Item;
        m_Item = nullptr;
    }
    T* m_Item = nullptr;
};

using CBlock_func_arg = CBlock_item;

// A single value: a string, an integer, a double or a bool.
class CBlock_value : public CBlock_item
{
public:
    enum Kind : std::uint8_t
    {
        k_Empty,
        k_String,
        k_Int,
        k_Double,
        k_Bool,
    };

    CBlock_value() = default;
    CBlock_value(const AString& text) : m_Kind(k_String), m_Text(text) {}
    CBlock_value(const wchar_t* text) : m_Kind(k_String), m_Text(text) {}
    CBlock_value(const int& value) : m_Kind(k_Int), m_Int(value) {}
    CBlock_value(const double& value) : m_Kind(k_Double), m_Double(value) {}
    CBlock_value(const bool& value) : m_Kind(k_Bool), m_Bool(value) {}

    Kind GetKind() const { return m_Kind; }
    bool IsValue() const override { return true; }

    // Conversions; true on success. A whole double converts to int, and a
    // string holding a number converts to either.
    bool Query(int& value) const;
    bool Query(double& value) const;
    bool Query(AString& value) const;
    bool Query(bool& value) const;

    bool operator==(const CBlock_value& other) const;
    bool operator!=(const CBlock_value& other) const { return !(*this == other); }

    const AString& Text() const { return m_Text; }

    void write(CAbstract_ostream& out) const override;

private:
    Kind m_Kind = k_Empty;
    int m_Int = 0;
    double m_Double = 0.0;
    bool m_Bool = false;
    AString m_Text;
};

// A name and one value: Name=value.
class CBlock_named_value : public CBlock_item
{
public:
    CBlock_named_value() = default;
    CBlock_named_value(const AString& name, const CBlock_value& value) : m_Name(name), m_Value(value) {}

    bool IsNamedValue() const override { return true; }
    bool IsNamed() const override { return true; }
    const AString& Name() const override { return m_Name; }
    const CBlock_value& Value() const { return m_Value; }
    CBlock_value& Value() { return m_Value; }

    void write(CAbstract_ostream& out) const override;

private:
    AString m_Name;
    CBlock_value m_Value;
};

class CBlockFuncPtr;

// While one of these lives, the function items made on its thread hold equal
// texts once: a function's name and its string arguments are looked up in
// the scope's table and the item found is shared. A large layout repeats a
// few hundred names and layer, net and padstack names millions of times, so
// this is most of what the tree would otherwise spend on text. Outside every
// scope each function holds texts of its own. Scopes nest; the innermost one
// is used. Items made in a scope may outlive it: the table only holds a
// reference to each text.
class CBlock_text_sharing
{
public:
    CBlock_text_sharing();
    ~CBlock_text_sharing();
    CBlock_text_sharing(const CBlock_text_sharing&) = delete;
    CBlock_text_sharing& operator=(const CBlock_text_sharing&) = delete;

    // A string value of that text, shared within the current scope, new
    // outside one. The caller takes a reference to it.
    static CBlock_value* TextValue(const AString& text);
    size_t size() const;

private:
    struct Table;
    Table* m_Table;
    CBlock_text_sharing* m_Outer;
};

// A function item: a name and its arguments in order. Numbers and bools are
// held in place; strings, named values and nested functions as shared items.
// The arguments live in one array of 8-byte slots followed by a byte of kind
// per slot, since a layout holds millions of small functions such as
// vertex(x, y, ...).
class CBlock_func : public CBlock_item
{
public:
    CBlock_func() = default;
    explicit CBlock_func(const AString& name);
    // A function whose name millions of items repeat (vertex, Arc): the name
    // item is the caller's, taken without a look-up.
    explicit CBlock_func(const CBlock_ptr<CBlock_value>& name);
    CBlock_func(const CBlock_func& other);
    CBlock_func(CBlock_func&& other) noexcept;
    CBlock_func& operator=(const CBlock_func& other);
    ~CBlock_func() override;

    bool IsFunc() const override { return true; }
    bool IsNamed() const override { return true; }
    const AString& Name() const override;

    CBlock_func& operator<<(const AString& text);
    CBlock_func& operator<<(const wchar_t* text);
    CBlock_func& operator<<(const int& value);
    CBlock_func& operator<<(const double& value);
    CBlock_func& operator<<(const bool& value);
    CBlock_func& operator<<(const CBlockFuncPtr& nested);
    CBlock_func& operator<<(const CBlock_func& nested);
    // Nests a function that is done with: its arguments move, not copied.
    CBlock_func& operator<<(CBlock_func&& nested);
    CBlock_func& operator<<(const CBlock_named_value& named);
    // Shares a value item: a text that millions of items repeat is held once.
    CBlock_func& operator<<(const CBlock_ptr<CBlock_value>& shared);

    // Takes the next argument in order; at the end, or when the argument does
    // not convert, the target stays as it was.
    CBlock_func& operator>>(AString& text);
    CBlock_func& operator>>(double& value);
    CBlock_func& operator>>(int& value);
    void RewindArguments() const { m_ReadIndex = 0; }

    size_t GetArgumentCount() const { return m_Count; }
    // The argument as a value (nested functions and named values give an empty
    // value); for inspection by tests and readers.
    CBlock_value GetArgumentValue(size_t index) const;
    // The argument as an item if it is one (string, named value, nested
    // function), else null.
    CBlock_item* GetArgumentItem(size_t index) const;

    void write(CAbstract_ostream& out) const override;

private:
    union Slot
    {
        int m_Int;
        double m_Double;
        bool m_Bool;
        CBlock_item* m_Item;
    };
    // k_Empty marks an item argument.
    CBlock_value::Kind* Kinds() const { return reinterpret_cast<CBlock_value::Kind*>(m_Slots + m_Capacity); }
    Slot& Append(CBlock_value::Kind kind);
    void Reserve(std::uint32_t capacity);
    void AddItem(CBlock_item* item);
    void ReleaseAll();

    CBlock_value* m_NameItem = nullptr;
    Slot* m_Slots = nullptr;
    std::uint32_t m_Count = 0;
    std::uint32_t m_Capacity = 0;
    mutable std::uint32_t m_ReadIndex = 0;
};

class CBlockPtr;

// A named block: an ordered list of child items of any kind.
class CBlock : public CBlock_item
{
public:
    using Children = std::vector<CBlock_ptr<CBlock_item>>;
    using iterator = Children::const_iterator;

    CBlock() = default;
    explicit CBlock(const AString& name) : m_Name(name) {}

    bool IsBlock() const override { return true; }
    bool IsNamed() const override { return true; }
    const AString& Name() const override { return m_Name; }

    CBlock& operator<<(const CBlockPtr& child);
    CBlock& operator<<(const CBlockFuncPtr& child);
    CBlock& operator<<(const CBlock_func& child);
    CBlock& operator<<(const CBlock_named_value& child);
    CBlock& operator<<(const CBlock_value& child);
    // Shares any item.
    CBlock& Add(const CBlock_ptr<CBlock_item>& child);

    // Looks the named value up by its name (first match, case counts) and
    // remembers whether it was found; the value is copied into the argument.
    CBlock& operator>>(CBlock_named_value& named);
    bool LastQueryOk() const { return m_QueryOk; }
    void SetLastQueryOk(bool ok) const { m_QueryOk = ok; }
    // First named value of that name, or null.
    const CBlock_named_value* FindNamedValue(const AString& name) const;

    iterator begin() const { return m_Children.begin(); }
    iterator end() const { return m_Children.end(); }
    CBlock_ptr<CBlock_item> Item(iterator it) const { return *it; }
    size_t size() const { return m_Children.size(); }
    bool empty() const { return m_Children.empty(); }

    void write(CAbstract_ostream& out) const override;
    // Reads the first block of this block's name from the stream (any name if
    // the block has none), with all it holds; other blocks in front of it are
    // passed over.
    bool read(CAbstract_istream& in) override;

private:
    friend class CBlockTextReader;
    AString m_Name;
    Children m_Children;
    mutable bool m_QueryOk = false;
};

// Counted pointer that makes its block from a name.
class CBlockPtr : public CBlock_ptr<CBlock>
{
public:
    CBlockPtr() = default;
    explicit CBlockPtr(const AString& name) : CBlock_ptr<CBlock>(new CBlock(name)) {}
    explicit CBlockPtr(const wchar_t* name) : CBlock_ptr<CBlock>(new CBlock(AString(name))) {}
    explicit CBlockPtr(CBlock* block) : CBlock_ptr<CBlock>(block) {}
};

// Counted pointer that makes its function item from a name.
class CBlockFuncPtr : public CBlock_ptr<CBlock_func>
{
public:
    CBlockFuncPtr() = default;
    explicit CBlockFuncPtr(const AString& name) : CBlock_ptr<CBlock_func>(new CBlock_func(name)) {}
    explicit CBlockFuncPtr(const wchar_t* name) : CBlock_ptr<CBlock_func>(new CBlock_func(AString(name))) {}
};

class CStreamio_manip
{
public:
    virtual ~CStreamio_manip() = default;
};

// Hands the outcome of the last named-value look-up of a block to a bool.
class CQuery_ok_manip
{
public:
    explicit CQuery_ok_manip(bool& ok) : m_Ok(&ok) {}
    bool* m_Ok;
};

// The object that both directions of a name=value item pass through.
template <class T> class CNamed_value_manip : public CStreamio_manip, public CStreamio_object
{
public:
    CNamed_value_manip(const AString& name, const CBlock_value& value, T* target = nullptr)
        : m_Named(name, value), m_Target(target)
    {
    }

    const CBlock_named_value& Named() const { return m_Named; }

    // Reads name=value from the stream. With a target the value is stored in
    // it; without one the read succeeds only if the value equals the
    // manipulator's own. On failure the stream is put back where it was.
    bool read(CAbstract_istream& in) override;
    void write(CAbstract_ostream& out) const override { m_Named.write(out); }

    // Looks the value up in a block; the outcome is remembered by the block.
    void ReadFrom(const CBlock& block) const
    {
        const CBlock_named_value* found = block.FindNamedValue(m_Named.Name());
        bool ok = found != nullptr;
        if (found && m_Target)
            ok = found->Value().Query(*m_Target);
        block.SetLastQueryOk(ok);
    }

private:
    CBlock_named_value m_Named;
    T* m_Target;
};

// Reads one name=value item at the stream's position; shared by the
// manipulators. False, with the position unchanged, if the text does not hold
// an item of that name.
bool ReadNamedValue_G(CAbstract_istream& in, const AString& name, CBlock_value& value);

template <class T> bool CNamed_value_manip<T>::read(CAbstract_istream& in)
{
    const CAbstract_stream_pos start = in.Tell();
    CBlock_value value;
    bool ok = ReadNamedValue_G(in, m_Named.Name(), value);
    if (ok)
        ok = m_Target ? value.Query(*m_Target) : value == m_Named.Value();
    if (!ok)
    {
        in.Seek(start);
        in.SetFail();
    }
    return ok;
}

template <class T> CBlock& operator<<(CBlock& block, const CNamed_value_manip<T>& manip)
{
    return block << manip.Named();
}
template <class T> const CBlock& operator>>(const CBlock& block, const CNamed_value_manip<T>& manip)
{
    manip.ReadFrom(block);
    return block;
}
inline const CBlock& operator>>(const CBlock& block, const CQuery_ok_manip& manip)
{
    *manip.m_Ok = block.LastQueryOk();
    return block;
}

// A block written while it is being built: its opening line goes out at once,
// each child as it is added, and the closing line on Close or destruction. The
// text is the one CBlock::write gives for the same children, so a writer can
// hand the items of a large block to the file one at a time and let them go
// instead of holding the whole tree of a board. A block may be opened inside
// another one; nothing is added to the outer one while the inner one is open.
// A child must be complete when it is added: later changes to it don't reach
// the file.
class CBlock_stream
{
public:
    CBlock_stream(CAbstract_ostream& out, const AString& name);
    CBlock_stream(CBlock_stream& parent, const AString& name);
    ~CBlock_stream() { Close(); }
    CBlock_stream(const CBlock_stream&) = delete;
    CBlock_stream& operator=(const CBlock_stream&) = delete;

    CBlock_stream& operator<<(const CBlockPtr& child);
    CBlock_stream& operator<<(const CBlock_func& child);
    CBlock_stream& operator<<(const CBlock_named_value& child);
    template <class T> CBlock_stream& operator<<(const CNamed_value_manip<T>& manip)
    {
        return *this << manip.Named();
    }
    // Writes the closing line; further calls do nothing.
    void Close();

private:
    CAbstract_ostream& m_Out;
    AString m_Name;
    bool m_Open = true;
};

} // namespace io
