// SPDX-License-Identifier: MIT
#pragma once

// The made subjects: a solid body in skin and cloth colours (nothing strongly
// green or blue) with soft fringes of one kind each. Every subject is a pure
// function of its kind, seed and size.

#include "tools/groundtruth/canvas.h"

#include <QString>

#include <cstdint>

namespace groundtruth {

enum class SubjectKind {
    Hair, // long hair with fly-away strands, blond, brown, black, grey or auburn
    Fur, // an animal's body ringed with short fur
    Veil, // a semi-transparent woven veil over head and shoulders
    Glass, // a tinted glass held in front, half over the backdrop
    Motion, // a head that moves a little and a ball that moves fast
};

constexpr SubjectKind kAllSubjectKinds[] = {SubjectKind::Hair, SubjectKind::Fur, SubjectKind::Veil,
                                            SubjectKind::Glass, SubjectKind::Motion};

QString subjectKindName(SubjectKind kind);

Scene subjectScene(SubjectKind kind, std::uint64_t seed, QSize size);

inline TrueMatte makeSubject(SubjectKind kind, std::uint64_t seed, QSize size)
{
    return render(subjectScene(kind, seed, size));
}

} // namespace groundtruth
