#include "quol/Number.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>

namespace Quol {

namespace {

bool isDigit(char c) { return c >= '0' && c <= '9'; }

std::size_t writeInteger(char* out, std::int32_t v) {
    char tmp[16];
    std::size_t n = 0;
    std::uint32_t u = v < 0 ? 0u - static_cast<std::uint32_t>(v) : static_cast<std::uint32_t>(v);
    do {
        tmp[n++] = static_cast<char>('0' + u % 10);
        u /= 10;
    } while (u);
    std::size_t pos = 0;
    if (v < 0) out[pos++] = '-';
    while (n) out[pos++] = tmp[--n];
    return pos;
}

std::size_t writeText(char* out, const char* text) {
    std::size_t n = std::strlen(text);
    std::memcpy(out, text, n);
    return n;
}

// The fixed form: significant digits with a decimal point, s being |v|
// scaled into [1, 10) when |v| >= 1, k the number of integer digits.
std::size_t writeFixed(char* out, double v, double s, int k, int precision, bool trim) {
    int digits[64];
    int count = 0;
    int zeros = 0;
    int total = precision;
    // Leading zeros do not count as precision.
    while (s < 1) {
        digits[count++] = 0;
        s = s * 10;
        ++total;
        ++zeros;
    }
    while (count < total) {
        int d = static_cast<int>(s);
        if (d > 9) d = 9;
        digits[count++] = d;
        s = (s - d) * 10;
    }
    int pointAt = k;
    if (s >= 5) {
        int i = count - 1;
        while (i >= 0 && digits[i] == 9) digits[i--] = 0;
        bool shrink;
        if (i < 0) {
            for (int j = count; j > 0; --j) digits[j] = digits[j - 1];
            digits[0] = 1;
            ++count;
            ++pointAt;
            shrink = true;
        } else {
            ++digits[i];
            shrink = i < zeros;  // the carry ran out of the significant digits
        }
        if (shrink) --count;
    }
    std::size_t pos = 0;
    if (v < 0) out[pos++] = '-';
    for (int i = 0; i < count || i < pointAt; ++i) {
        if (i == pointAt) out[pos++] = '.';
        out[pos++] = static_cast<char>('0' + (i < count ? digits[i] : 0));
    }
    if (trim && count > pointAt) {
        while (out[pos - 1] == '0') --pos;
        if (out[pos - 1] == '.') --pos;
    }
    return pos;
}

}  // namespace

double parseNumber(std::string_view text, std::size_t& position) {
    const std::size_t n = text.size();
    std::size_t p = position;
    double sign = 1.0;
    if (p < n && text[p] == '-' && p + 1 < n) {
        sign = -1.0;
        ++p;
    }
    if (p >= n || !isDigit(text[p])) {
        position = p;
        return 0.0;
    }
    long double value = 0.0L;
    if (text[p] == '0') {
        ++p;
    } else {
        while (p < n && isDigit(text[p])) value = value * 10 + (text[p++] - '0');
    }
    if (p + 1 < n && text[p] == '.' && isDigit(text[p + 1])) {
        ++p;
        long double scale = 0.1L;
        value += (text[p++] - '0') * scale;
        while (p < n && isDigit(text[p])) {
            scale *= 0.1L;
            value += (text[p++] - '0') * scale;
        }
    }
    double result = static_cast<double>(value);
    if (p + 1 < n && (text[p] == 'e' || text[p] == 'E')) {
        std::size_t q = p + 1;
        bool negative = false;
        if (text[q] == '+' && q + 1 < n) {
            ++q;
        } else if (text[q] == '-' && q + 1 < n) {
            negative = true;
            ++q;
        }
        int exponent = 0;
        while (q < n && isDigit(text[q])) {
            if (exponent < 100000) exponent = exponent * 10 + (text[q] - '0');
            ++q;
        }
        p = q;
        result = result * std::pow(10.0, negative ? -exponent : exponent);
    }
    position = p;
    return result * sign;
}

bool strictNumber(std::string_view text, double& value) {
    std::size_t pos = 0;
    value = parseNumber(text, pos);
    return pos > 0 && pos == text.size();
}

bool strictNumber(std::string_view text) {
    double ignored;
    return strictNumber(text, ignored);
}

std::size_t writeNumber(char* out, double v, int precision, bool trim) {
    if (std::isnan(v)) return writeText(out, "nan");
    if (std::isinf(v)) return writeText(out, v < 0 ? "-inf" : "inf");
    if (precision < 1) precision = 1;
    if (precision > 40) precision = 40;
    if (trim && v >= -2147483648.0 && v <= 2147483647.0) {
        std::int32_t i = static_cast<std::int32_t>(v);
        if (static_cast<double>(i) == v) return writeInteger(out, i);
    }
    const double a = std::fabs(v);
    double s = a;
    int k = 1;
    bool exponential = false;
    while (s >= 10) {
        if (k >= precision) {
            exponential = true;
            break;
        }
        s = s * 0.1;
        ++k;
    }
    bool checkTiny = exponential;
    if (!exponential) {
        if (k > precision || a < 1e-06) {
            exponential = true;
            checkTiny = true;
        } else if (a > 1e+12) {
            exponential = true;
        }
    }
    if (!exponential) return writeFixed(out, v, s, k, precision, trim);
    if (checkTiny && a < 1e-300) return writeText(out, "0");
    const int e = static_cast<int>(std::floor(std::log10(a) + 1e-10));
    int d = 15;
    for (int x = std::abs(e); x >= 8; x /= 10) --d;
    const double m = std::pow(0.1, e) * v;
    std::size_t pos = writeNumber(out, m, std::min(d, precision), trim);
    out[pos++] = 'e';
    if (e >= 0) out[pos++] = '+';
    return pos + writeInteger(out + pos, e);
}

Value numberToString(double v, int precision, bool trim) {
    char buffer[kNumberTextSize];
    return Value(std::string_view(buffer, writeNumber(buffer, v, precision, trim)));
}

Value integerToString(std::int32_t v) {
    char buffer[16];
    return Value(std::string_view(buffer, writeInteger(buffer, v)));
}

}  // namespace Quol
