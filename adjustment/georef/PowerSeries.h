// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// Power series in some variables, cut off after a total degree: a scalar on which the formulas of
// the sensor model give their Taylor polynomial instead of a number.
//
//     using Series = PowerSeries<2, 4>;
//     const Series f = sin(Series::variable(x0, 0)) * Series::variable(y0, 1);
//     f[Series::place({1, 2})];  // the coefficient of (x − x0) (y − y0)²
#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>

namespace Velorn {

template <std::size_t variables, std::size_t order>
class PowerSeries {
 public:
  using Exponents = std::array<std::size_t, variables>;

  /// C(variables + order, order)
  static constexpr std::size_t terms = [] {
    std::size_t count = 1;
    for (std::size_t i = 1; i <= variables; ++i) count = count * (order + i) / i;
    return count;
  }();

  constexpr PowerSeries() = default;
  // NOLINTNEXTLINE(google-explicit-constructor): a number is a series, as it is a double
  constexpr PowerSeries(double constant) { k_[0] = constant; }

  /// value + x, with x the variable of that number
  static constexpr PowerSeries variable(double value, std::size_t number) {
    PowerSeries x(value);
    Exponents e{};
    e[number] = 1;
    x.k_[place(e)] = 1.0;
    return x;
  }

  /// Where the coefficient of a product of powers stands; their sum is at most the order.
  static constexpr std::size_t place(const Exponents& e) {
    return static_cast<std::size_t>(std::find(table.exponents.begin(), table.exponents.end(), e) -
                                    table.exponents.begin());
  }

  constexpr double operator[](std::size_t place) const { return k_[place]; }
  constexpr double& operator[](std::size_t place) { return k_[place]; }

  PowerSeries& operator+=(const PowerSeries& b) {
    for (std::size_t i = 0; i < terms; ++i) k_[i] += b.k_[i];
    return *this;
  }
  PowerSeries& operator-=(const PowerSeries& b) {
    for (std::size_t i = 0; i < terms; ++i) k_[i] -= b.k_[i];
    return *this;
  }
  PowerSeries& operator*=(double b) {
    for (double& k : k_) k *= b;
    return *this;
  }
  PowerSeries& operator*=(const PowerSeries& b) { return *this = *this * b; }
  PowerSeries& operator/=(const PowerSeries& b) { return *this = *this / b; }

  friend PowerSeries operator+(PowerSeries a, const PowerSeries& b) { return a += b; }
  friend PowerSeries operator-(PowerSeries a, const PowerSeries& b) { return a -= b; }
  friend PowerSeries operator-(PowerSeries a) { return a *= -1.0; }
  friend PowerSeries operator+(PowerSeries a, double b) { return a.k_[0] += b, a; }
  friend PowerSeries operator+(double a, PowerSeries b) { return b.k_[0] += a, b; }
  friend PowerSeries operator-(PowerSeries a, double b) { return a.k_[0] -= b, a; }
  friend PowerSeries operator-(double a, PowerSeries b) { return (b *= -1.0) + a; }
  friend PowerSeries operator*(PowerSeries a, double b) { return a *= b; }
  friend PowerSeries operator*(double a, PowerSeries b) { return b *= a; }
  friend PowerSeries operator/(PowerSeries a, double b) { return a *= 1.0 / b; }

  friend PowerSeries operator*(const PowerSeries& a, const PowerSeries& b) {
    PowerSeries product;
    for (std::size_t i = 0; i < terms; ++i) {
      for (std::size_t j = 0; j < table.partners[i]; ++j) {
        product.k_[table.products[i][j]] += a.k_[i] * b.k_[j];
      }
    }
    return product;
  }

  friend PowerSeries operator/(const PowerSeries& a, const PowerSeries& b) {
    Derivatives f{1.0 / b.k_[0]};
    for (std::size_t m = 1; m <= order; ++m) f[m] = -f[m - 1] / b.k_[0];
    return a * composed(f, b);
  }

  /// By the variable of that number; the terms of highest degree are lost.
  PowerSeries derivative(std::size_t number) const {
    PowerSeries result;
    for (std::size_t i = 1; i < terms; ++i) {
      Exponents e = table.exponents[i];
      if (e[number] == 0) continue;
      const auto power = static_cast<double>(e[number]--);
      result.k_[place(e)] = power * k_[i];
    }
    return result;
  }

  friend PowerSeries sqrt(const PowerSeries& x) {
    Derivatives f{std::sqrt(x.k_[0])};
    for (std::size_t m = 1; m <= order; ++m) {
      const auto n = static_cast<double>(m);
      f[m] = f[m - 1] * (1.5 - n) / (n * x.k_[0]);
    }
    return composed(f, x);
  }

  friend PowerSeries sin(const PowerSeries& x) {
    const double s = std::sin(x.k_[0]), c = std::cos(x.k_[0]);
    return composed(overFactorials({s, c, -s, -c}), x);
  }
  friend PowerSeries cos(const PowerSeries& x) {
    const double s = std::sin(x.k_[0]), c = std::cos(x.k_[0]);
    return composed(overFactorials({c, -s, -c, s}), x);
  }
  friend PowerSeries sinh(const PowerSeries& x) {
    const double s = std::sinh(x.k_[0]), c = std::cosh(x.k_[0]);
    return composed(overFactorials({s, c, s, c}), x);
  }

  friend PowerSeries log1p(const PowerSeries& x) {
    Derivatives f{std::log1p(x.k_[0])};
    double power = -1.0;
    for (std::size_t m = 1; m <= order; ++m) {
      power /= -(1.0 + x.k_[0]);
      f[m] = power / static_cast<double>(m);
    }
    return composed(f, x);
  }

  /// The angle at the origin, and from there the arctangent of what turns away from it.
  friend PowerSeries atan2(const PowerSeries& y, const PowerSeries& x) {
    const double x0 = x.k_[0], y0 = y.k_[0];
    PowerSeries away = (y * x0 - x * y0) / (x * x0 + y * y0);
    away.k_[0] = 0.0;
    Derivatives f{std::atan2(y0, x0)};
    for (std::size_t m = 1; m <= order; m += 2) {
      f[m] = (m % 4 == 1 ? 1.0 : -1.0) / static_cast<double>(m);
    }
    return composed(f, away);
  }

 private:
  /// Of a function at one place, divided by the factorials.
  using Derivatives = std::array<double, order + 1>;

  struct Table {
    std::array<Exponents, terms> exponents{};   // by rising sum, which is the degree
    std::array<std::size_t, terms> partners{};  // the first so many give no degree above the order
    std::array<std::array<unsigned char, terms>, terms> products{};
  };

  static constexpr std::size_t degree(const Exponents& e) {
    std::size_t sum = 0;
    for (const std::size_t power : e) sum += power;
    return sum;
  }

  static constexpr Table madeTable() {
    static_assert(terms < 256);
    Table t;
    std::size_t count = 0;
    for (std::size_t d = 0; d <= order; ++d) {
      std::size_t numbers = 1;  // written with the exponents as digits
      for (std::size_t v = 0; v < variables; ++v) numbers *= order + 1;
      for (std::size_t number = 0; number < numbers; ++number) {
        Exponents e{};
        for (std::size_t v = 0, rest = number; v < variables; ++v, rest /= order + 1) {
          e[v] = rest % (order + 1);
        }
        if (degree(e) == d) t.exponents[count++] = e;
      }
    }
    for (std::size_t i = 0; i < terms; ++i) {
      for (std::size_t j = 0; j < terms; ++j) {
        Exponents sum = t.exponents[i];
        for (std::size_t v = 0; v < variables; ++v) sum[v] += t.exponents[j][v];
        if (degree(sum) > order) break;
        t.partners[i] = j + 1;
        std::size_t k = 0;
        while (t.exponents[k] != sum) ++k;
        t.products[i][j] = static_cast<unsigned char>(k);
      }
    }
    return t;
  }

  static const Table table;

  static Derivatives overFactorials(const std::array<double, 4>& cycle) {
    Derivatives f{};
    double factorial = 1.0;
    for (std::size_t m = 0; m <= order; ++m) {
      f[m] = cycle[m % 4] / factorial;
      factorial *= static_cast<double>(m + 1);
    }
    return f;
  }

  /// f(x), by Horner's rule in x without its constant.
  static PowerSeries composed(const Derivatives& f, PowerSeries x) {
    x.k_[0] = 0.0;
    PowerSeries sum(f[order]);
    for (std::size_t m = order; m-- > 0;) {
      sum *= x;
      sum.k_[0] += f[m];
    }
    return sum;
  }

  std::array<double, terms> k_{};
};

template <std::size_t variables, std::size_t order>
inline constexpr
    typename PowerSeries<variables, order>::Table PowerSeries<variables, order>::table =
        madeTable();

}  // namespace Velorn
