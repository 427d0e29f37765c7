// A stack of integers: the class is declared here, some methods inline.
#pragma once

namespace demo {

class Stack : public Container
{
public:
    explicit Stack(int capacity) : m_capacity(capacity), m_items{nullptr} {}
    ~Stack();

    int size() const { return m_size; }
    bool isFull() const
    {
        return m_size >= m_capacity || m_capacity == 0;
    }
    void push(int value);
    int pop();

private:
    int m_capacity;
    int m_size = 0;
    int* m_items;
};

}
