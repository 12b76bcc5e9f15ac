#pragma once

/// Opaque handles of the host's objects.
///
/// A handle is the address of an object that the host owns; the types are never complete on the
/// link's side. Distinct types keep a model handle from being passed as an option handle.

namespace hostapi {

struct ModelRecord;
struct EnvironmentRecord;
struct OptionRecord;
struct AuditRecord;
struct DictionaryRecord;

using ModelHandle = ModelRecord*;              ///< model object, prefix `nmo`
using EnvironmentHandle = EnvironmentRecord*;  ///< environment, prefix `nev`
using OptionHandle = OptionRecord*;            ///< option object, prefix `opt`
using AuditHandle = AuditRecord*;              ///< audit object, prefix `hux`
using DictionaryHandle = DictionaryRecord*;    ///< names of a model; null without names

}  // namespace hostapi
