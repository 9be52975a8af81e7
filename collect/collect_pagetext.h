#pragma once

/// The constant parts of the page.
namespace collect {

inline constexpr const char* kStyle = R"CSS(
:root{color-scheme:light dark;--back:#fff;--text:#1c2024;--soft:#58616a;--line:#cfd6dd;--card:#f5f7f9;--alarm:#b3261e;--mark:#8a5300;--focus:#0b63c5}
@media(prefers-color-scheme:dark){:root{--back:#101418;--text:#e4e8ec;--soft:#9ba5af;--line:#39424b;--card:#181e24;--alarm:#ff8a80;--mark:#ffb74d;--focus:#6cb2ff}}
*{box-sizing:border-box}
body{margin:0 auto;max-width:72rem;padding:1rem;background:var(--back);color:var(--text);font:1rem/1.5 system-ui,sans-serif;overflow-wrap:anywhere}
h1{margin:0;font-size:1.6rem}
h2{margin:2rem 0 .5rem;font-size:1.2rem}
header p,.numbers,dt,caption,output{color:var(--soft)}
header p{margin:.25rem 0}
.filter{display:flex;flex-wrap:wrap;gap:.5rem;align-items:center}
input{flex:1 1 12rem;min-width:0;padding:.5rem;font:inherit;color:inherit;background:var(--back);border:1px solid var(--soft);border-radius:.3rem}
:focus-visible{outline:3px solid var(--focus);outline-offset:1px}
.failure{margin:.5rem 0;border:1px solid var(--line);border-radius:.4rem;background:var(--card)}
.failure[hidden]{display:none}
summary{padding:.6rem .8rem;cursor:pointer}
.failure>:not(summary){margin-left:.8rem;margin-right:.8rem}
strong{margin-right:.3rem}
.ASSERT,.ALERT{padding:0 .3rem;border:1px solid;border-radius:.3rem;font-size:.75rem;font-weight:600}
.ASSERT{color:var(--alarm)}
.ALERT{color:var(--mark)}
.numbers{display:block;font-size:.9rem}
dl{display:grid;grid-template-columns:max-content 1fr;gap:.2rem 1rem;margin-top:.2rem}
dd{margin:0;white-space:pre-wrap}
.scroll{overflow-x:auto;overflow-wrap:normal}
table{border-collapse:collapse;width:100%;margin:.5rem 0}
caption{text-align:left;font-size:.9rem}
th,td{padding:.3rem .8rem .3rem 0;border-top:1px solid var(--line);text-align:left;vertical-align:top}
thead th{font-weight:600;color:var(--soft);white-space:nowrap}
tbody th{font-weight:600;white-space:nowrap}
time{white-space:nowrap}
.backtrace{margin-top:.5rem;margin-bottom:.8rem}
.backtrace summary{padding-left:0;padding-right:0}
pre{margin:0;padding:.6rem;overflow-x:auto;overflow-wrap:normal;border:1px solid var(--line);border-radius:.3rem;background:var(--back);font-size:.85rem}
@media(max-width:40rem){dl{grid-template-columns:1fr;gap:0}dt{margin-top:.4rem}}
)CSS";

/// The filter.
inline constexpr const char* kScript =
    R"JS(document.getElementById("filter").addEventListener("input",e=>{const w=e.target.value.toLowerCase();let n=0;for(const f of document.querySelectorAll(".failure")){f.hidden=!f.textContent.toLowerCase().includes(w);n+=!f.hidden}document.getElementById("shown").textContent=n+(n===1?" site":" sites")}))JS";

/// Lets a browser load nothing, and run and apply only the two texts above, whose SHA-256
/// hashes these are. To compute them again: `openssl dgst -sha256 -binary | base64`.
inline constexpr const char* kPolicy =
    "default-src 'none'; base-uri 'none'; form-action 'none'; "
    "style-src 'sha256-80rafUTPzEm/C3u9yJcOWPHpN7CiZpJW76XWKd9n6Q8='; "
    "script-src 'sha256-tsK5un/knHjsRea0vB989CtT/iwVAb5QIyJqddKyQic='";

} // namespace collect
