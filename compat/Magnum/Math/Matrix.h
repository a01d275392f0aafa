/* Magnum/Math/Matrix.h: square column-major matrix with determinant and inverse */
#ifndef Magnum_Math_Matrix_h
#define Magnum_Math_Matrix_h

#include "Magnum/Math/Vector4.h"

namespace Magnum { namespace Math {

namespace Implementation {
    template<std::size_t size, class T> struct MatrixDeterminant;

    /* Columns of 4x4 matrices are stored as Vector4 so that Matrix4 can hand
       out Vector4 references without reinterpreting memory */
    template<std::size_t size, class T> struct MatrixColumn { typedef Vector<size, T> Type; };
    template<class T> struct MatrixColumn<4, T> { typedef Vector4<T> Type; };
}

/**
@brief Square matrix of @p size columns of @p size rows, stored column-major

Identity by default. @cpp m[col][row] @ce addresses one element. Comparison is
fuzzy for floating-point types.
*/
template<std::size_t size, class T> class Matrix {
    public:
        typedef T Type;
        enum: std::size_t { Size = size, Cols = size, Rows = size };

        /** @brief Identity matrix */
        Matrix() noexcept {
            for(std::size_t i = 0; i != size; ++i) _data[i][i] = T(1);
        }

        /** @brief Construct from @p size column vectors */
        template<class ...U, class V = typename std::enable_if<sizeof...(U) + 1 == size, T>::type> Matrix(const Vector<size, T>& first, const U&... next) noexcept: _data{Column(first), Column(next)...} {}

        /** @brief Raw data, @p size × @p size values column after column */
        T* data() { return _data[0].data(); }
        const T* data() const { return _data[0].data(); } /**< @overload */

        /** @brief Column at @p col */
        Vector<size, T>& operator[](std::size_t col) { return _data[col]; }
        const Vector<size, T>& operator[](std::size_t col) const { return _data[col]; } /**< @overload */

        /** @brief Fuzzy equality of all elements */
        bool operator==(const Matrix<size, T>& other) const {
            for(std::size_t i = 0; i != size; ++i)
                if(_data[i] != other._data[i]) return false;
            return true;
        }
        bool operator!=(const Matrix<size, T>& other) const { return !operator==(other); } /**< @brief Non-equality */

        /** @brief Matrix product, @cpp (*this)*other @ce */
        Matrix<size, T> operator*(const Matrix<size, T>& other) const {
            Matrix<size, T> out;
            for(std::size_t col = 0; col != size; ++col)
                out._data[col] = (*this)*other._data[col];
            return out;
        }

        /** @brief Matrix times column vector */
        Vector<size, T> operator*(const Vector<size, T>& vector) const {
            Vector<size, T> out;
            for(std::size_t col = 0; col != size; ++col)
                out += _data[col]*vector[col];
            return out;
        }

        /** @brief Transposed matrix */
        Matrix<size, T> transposed() const {
            Matrix<size, T> out;
            for(std::size_t col = 0; col != size; ++col)
                for(std::size_t row = 0; row != size; ++row)
                    out._data[col][row] = _data[row][col];
            return out;
        }

        /** @brief Values on the diagonal */
        Vector<size, T> diagonal() const {
            Vector<size, T> out;
            for(std::size_t i = 0; i != size; ++i) out[i] = _data[i][i];
            return out;
        }

        /** @brief Matrix without column @p skipCol and row @p skipRow */
        Matrix<size - 1, T> ij(std::size_t skipCol, std::size_t skipRow) const {
            Matrix<size - 1, T> out;
            for(std::size_t col = 0, outCol = 0; col != size; ++col) {
                if(col == skipCol) continue;
                for(std::size_t row = 0, outRow = 0; row != size; ++row) {
                    if(row == skipRow) continue;
                    out[outCol][outRow++] = _data[col][row];
                }
                ++outCol;
            }
            return out;
        }

        /**
         * @brief Determinant
         *
         * By cofactor expansion along the first row, except for 3x3
         * matrices, which expand along the first column; results are the
         * same to the last bit as the real library's.
         */
        T determinant() const { return Implementation::MatrixDeterminant<size, T>()(*this); }

        /** @brief Cofactor, the signed determinant of @ref ij() */
        T cofactor(std::size_t col, std::size_t row) const {
            return (((row + col) & 1) ? -1 : 1)*ij(col, row).determinant();
        }

        /** @brief Matrix of cofactors */
        Matrix<size, T> comatrix() const {
            Matrix<size, T> out;
            for(std::size_t col = 0; col != size; ++col)
                for(std::size_t row = 0; row != size; ++row)
                    out._data[col][row] = cofactor(col, row);
            return out;
        }

        /** @brief Adjugate, the transposed matrix of cofactors */
        Matrix<size, T> adjugate() const { return comatrix().transposed(); }

        /**
         * @brief Inverse, the adjugate divided by the determinant
         *
         * Expects that the matrix is not singular; a singular matrix gives
         * infinite or NaN elements.
         */
        Matrix<size, T> inverted() const {
            Matrix<size, T> out = adjugate();
            const T determinant = this->determinant();
            for(std::size_t col = 0; col != size; ++col) out._data[col] /= determinant;
            return out;
        }

    protected:
        typedef typename Implementation::MatrixColumn<size, T>::Type Column;
        Column _data[size];
};

namespace Implementation {

template<std::size_t size, class T> struct MatrixDeterminant {
    T operator()(const Matrix<size, T>& m) const {
        T out{};
        for(std::size_t col = 0; col != size; ++col)
            out += m[col][0]*m.cofactor(col, 0);
        return out;
    }
};

template<class T> struct MatrixDeterminant<3, T> {
    T operator()(const Matrix<3, T>& m) const {
        return m[0][0]*((m[1][1]*m[2][2]) - (m[2][1]*m[1][2])) -
            m[0][1]*(m[1][0]*m[2][2] - m[2][0]*m[1][2]) +
            m[0][2]*(m[1][0]*m[2][1] - m[2][0]*m[1][1]);
    }
};

template<class T> struct MatrixDeterminant<2, T> {
    T operator()(const Matrix<2, T>& m) const {
        return m[0][0]*m[1][1] - m[1][0]*m[0][1];
    }
};

template<class T> struct MatrixDeterminant<1, T> {
    T operator()(const Matrix<1, T>& m) const { return m[0][0]; }
};

}

}}

#endif
