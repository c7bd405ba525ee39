#include "pictures/fractional_power.h"

FractionalPower::FractionalPower(double exponent) : m_exponent(exponent) {
    double coefficient = 1;
    for (size_t k = 0; k < m_coefficients.size(); ++k) {
        coefficient *= (exponent - double(k)) / double(k + 1);
        m_coefficients[k] = coefficient;
    }
    for (size_t i = 0; i < m_nodes.size(); ++i) {
        double const node = nodeAt(kFirst + i);
        m_nodes[i] = {std::pow(node, exponent), 1 / node};
    }
}
