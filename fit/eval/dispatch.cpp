// The tables of evaluators.
#include "fit/eval/evaluator.h"

namespace nax::fit {

#define NAX_DF_EVALUATOR(name, orders) nax_df_kernel_d_##name##SplineEval32,
template <>
const EvaluatorFunction EvaluatorTables<double>::_Interpolate1D32Dispatch[kEvaluators] = {
#include "fit/eval/evaluators.def"
};
#undef NAX_DF_EVALUATOR
#define NAX_DF_EVALUATOR(name, orders) nax_df_kernel_d_##name##SplineEval64,
template <>
const EvaluatorFunction EvaluatorTables<double>::_Interpolate1D64Dispatch[kEvaluators] = {
#include "fit/eval/evaluators.def"
};
#undef NAX_DF_EVALUATOR
#define NAX_DF_EVALUATOR(name, orders) nax_df_kernel_d_##name##SplineEval32CB,
template <>
const EvaluatorFunction EvaluatorTables<double>::_Interpolate1D32DispatchCB[kEvaluators] = {
#include "fit/eval/evaluators.def"
};
#undef NAX_DF_EVALUATOR
#define NAX_DF_EVALUATOR(name, orders) nax_df_kernel_d_##name##SplineEval64CB,
template <>
const EvaluatorFunction EvaluatorTables<double>::_Interpolate1D64DispatchCB[kEvaluators] = {
#include "fit/eval/evaluators.def"
};
#undef NAX_DF_EVALUATOR

#define NAX_DF_EVALUATOR(name, orders) nax_df_kernel_s_##name##SplineEval32,
template <>
const EvaluatorFunction EvaluatorTables<float>::_Interpolate1D32Dispatch[kEvaluators] = {
#include "fit/eval/evaluators.def"
};
#undef NAX_DF_EVALUATOR
#define NAX_DF_EVALUATOR(name, orders) nax_df_kernel_s_##name##SplineEval64,
template <>
const EvaluatorFunction EvaluatorTables<float>::_Interpolate1D64Dispatch[kEvaluators] = {
#include "fit/eval/evaluators.def"
};
#undef NAX_DF_EVALUATOR
#define NAX_DF_EVALUATOR(name, orders) nax_df_kernel_s_##name##SplineEval32CB,
template <>
const EvaluatorFunction EvaluatorTables<float>::_Interpolate1D32DispatchCB[kEvaluators] = {
#include "fit/eval/evaluators.def"
};
#undef NAX_DF_EVALUATOR
#define NAX_DF_EVALUATOR(name, orders) nax_df_kernel_s_##name##SplineEval64CB,
template <>
const EvaluatorFunction EvaluatorTables<float>::_Interpolate1D64DispatchCB[kEvaluators] = {
#include "fit/eval/evaluators.def"
};
#undef NAX_DF_EVALUATOR

}  // namespace nax::fit
