// The tables of evaluators.
#include "fit/eval/evaluator.h"

namespace nax::fit {

#define NAX_DF_ENTRY(name, precision, member) nax_df_kernel_##precision##_##name##SplineEval##member,
#define NAX_DF_TABLE(T, table, precision, member)                      \
    template <>                                                        \
    const EvaluatorFunction EvaluatorTables<T>::table[kEvaluators] = { \
        NAX_DF_EVALUATORS(NAX_DF_ENTRY, precision, member)};
NAX_DF_TABLE(double, _Interpolate1D32Dispatch, d, 32)
NAX_DF_TABLE(double, _Interpolate1D64Dispatch, d, 64)
NAX_DF_TABLE(double, _Interpolate1D32DispatchCB, d, 32CB)
NAX_DF_TABLE(double, _Interpolate1D64DispatchCB, d, 64CB)
NAX_DF_TABLE(float, _Interpolate1D32Dispatch, s, 32)
NAX_DF_TABLE(float, _Interpolate1D64Dispatch, s, 64)
NAX_DF_TABLE(float, _Interpolate1D32DispatchCB, s, 32CB)
NAX_DF_TABLE(float, _Interpolate1D64DispatchCB, s, 64CB)

}  // namespace nax::fit
