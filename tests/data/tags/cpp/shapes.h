// Geometry shapes for the tagging tests.
#ifndef SHAPES_H
#define SHAPES_H

namespace geo {

struct Point {
    double x;
    double y;
};

class Shape {
public:
    Shape();
    virtual ~Shape();
    virtual double area() const = 0;
    virtual void move(double dx, double dy);
    void scale(int factor);
    void scale(double factor);

protected:
    void touch();

private:
    int m_id;

public:
    class Visitor {
    public:
        void visit(Shape& shape);
    };
};

class Circle : public Shape {
public:
    explicit Circle(double radius);
    double area() const override;

private:
    double m_radius;
};

namespace detail {
int counter(int start);
}

}

#endif
