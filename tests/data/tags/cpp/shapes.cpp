#include "shapes.h"

namespace geo {

Shape::Shape() : m_id(0) {}

Shape::~Shape() {}

void Shape::move(double dx, double dy)
{
    (void)dx;
    (void)dy;
}

void Shape::scale(int factor)
{
    m_id *= factor;
}

void Shape::scale(double factor)
{
    m_id = int(m_id * factor);
}

void Shape::touch() {}

void Shape::Visitor::visit(Shape& shape)
{
    shape.touch();
}

Circle::Circle(double radius) : m_radius(radius) {}

double Circle::area() const
{
    return 3.14159 * m_radius * m_radius;
}

namespace detail {
int counter(int start)
{
    return start + 1;
}
}

}

static int helper(int a, int b)
{
    return a + b;
}

int shapes_total(int n)
{
    return helper(n, n);
}
