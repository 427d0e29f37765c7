#include "stack.h"

namespace demo {

Stack::~Stack()
{
    delete[] m_items;
}

void Stack::push(int value)
{
    if (isFull())
        return;
    m_items[m_size++] = value;
}

/* Removes the top value; 0 when empty. */
int Stack::pop()
{
    return m_size > 0 ? m_items[--m_size] : 0;
}

}

template <typename T>
T Holder<T>::get() const
{
    return m_value;
}

bool operator==(const Stack& a, const Stack& b)
{
    return a.size() == b.size();
}
