; The installer's own part. It writes the new version beside the old one, and two renamed
; folders make the change; until then nothing that was there is touched.

Var stage ; the new version while it is written
Var aside ; what was in its place
Var former ; where the version is that this one replaces
Var parentIsNew
Var obstacle
Var size ; in kB

Function CleanUp
    SetOutPath "$TEMP" ; a current folder cannot be removed
    RMDir /r "$stage"
    ${If} $parentIsNew != ""
        RMDir "$parentIsNew"
    ${EndIf}
FunctionEnd

; What follows a file that cannot be written. NSIS itself then answers 2.
Function .onInstFailed
    Call CleanUp
FunctionEnd

!macro GiveUp REASON
    Call CleanUp
    MessageBox MB_ICONSTOP "${REASON} Nothing was changed." /SD IDOK
    SetErrorLevel ${STATUS_REFUSED}
    Quit
!macroend

; Finds a file where a folder belongs, or the other way round. $0: the folder below the new
; version, "" or "\sub".
Function FindObstacle
    Push $1
    Push $2
    FindFirst $1 $2 "$stage$0\*"
    ${While} $2 != ""
        ${If} $2 == "."
        ${OrIf} $2 == ".."
            ; neither
        ${ElseIf} ${FileExists} "$stage$0\$2\*.*"
            ${If} ${FileExists} "$INSTDIR$0\$2"
            ${AndIfNot} ${FileExists} "$INSTDIR$0\$2\*.*"
                StrCpy $obstacle "$INSTDIR$0\$2"
            ${EndIf}
            Push $0
            StrCpy $0 "$0\$2"
            Call FindObstacle
            Pop $0
        ${ElseIf} ${FileExists} "$INSTDIR$0\$2\*.*"
            StrCpy $obstacle "$INSTDIR$0\$2"
        ${EndIf}
        FindNext $1 $2
    ${EndWhile}
    FindClose $1
    Pop $2
    Pop $1
FunctionEnd

; Gives the folder back what was in it besides the old version. $0: as above.
Function GiveBack
    Push $1
    Push $2
    FindFirst $1 $2 "$aside$0\*"
    ${While} $2 != ""
        ${If} $2 != "."
        ${AndIf} $2 != ".."
            ${IfNot} ${FileExists} "$INSTDIR$0\$2"
                Rename "$aside$0\$2" "$INSTDIR$0\$2"
            ${ElseIf} ${FileExists} "$aside$0\$2\*.*"
                Push $0
                StrCpy $0 "$0\$2"
                Call GiveBack
                Pop $0
            ${Else}
                Delete "$aside$0\$2"
            ${EndIf}
        ${EndIf}
        FindNext $1 $2
    ${EndWhile}
    FindClose $1
    RMDir "$aside$0"
    Pop $2
    Pop $1
FunctionEnd

; Has the uninstaller of a version remove it; only that one knows its files. $R0: where.
Function RemoveVersion
    ${If} ${FileExists} "$R0\uninstall.exe"
        ExecWait '"$R0\uninstall.exe" /S _?=$R0'
        Delete "$R0\uninstall.exe"
        RMDir "$R0"
    ${EndIf}
FunctionEnd

Function PrepareFolders
    StrCpy $stage "$INSTDIR~new"
    StrCpy $aside "$INSTDIR~old"
    ; An earlier installation was interrupted between its two last steps.
    ${If} ${FileExists} "$aside\*.*"
    ${AndIfNot} ${FileExists} "$INSTDIR"
        Rename "$aside" "$INSTDIR"
    ${EndIf}
    RMDir /r "$stage"
    ${If} ${FileExists} "$aside"
        !insertmacro GiveUp "$aside is in the way."
    ${EndIf}
    ${If} ${FileExists} "$INSTDIR\*.*"
        ClearErrors
        FileOpen $0 "$INSTDIR\~new" w
        ${If} ${Errors}
            !insertmacro GiveUp "$INSTDIR cannot be written to."
        ${EndIf}
        FileClose $0
        Delete "$INSTDIR\~new"
    ${ElseIf} ${FileExists} "$INSTDIR"
        !insertmacro GiveUp "$INSTDIR is in the way."
    ${EndIf}
    ${GetParent} "$INSTDIR" $0
    ${IfNot} ${FileExists} "$0\*.*"
        StrCpy $parentIsNew $0
    ${EndIf}
FunctionEnd

; Puts the new version in the old one's place.
Function Exchange
    SetOutPath "$TEMP"
    ClearErrors
    ${If} ${FileExists} "$INSTDIR\*.*"
        Rename "$INSTDIR" "$aside"
        ${If} ${Errors}
            !insertmacro GiveUp "$INSTDIR cannot be replaced."
        ${EndIf}
    ${EndIf}
    Rename "$stage" "$INSTDIR"
    ${If} ${Errors}
        Rename "$aside" "$INSTDIR"
        !insertmacro GiveUp "$INSTDIR cannot be written."
    ${EndIf}
FunctionEnd

!macro Permit PATH RIGHTS
    System::Call 'advapi32::ConvertStringSecurityDescriptorToSecurityDescriptorW(\
        w "${RIGHTS}", i 1, *p .r0, p 0)'
    System::Call 'advapi32::SetFileSecurityW(w "${PATH}", i 4, p r0)'
    System::Call 'kernel32::LocalFree(p r0)'
!macroend

; What crashes and reports leave: users may add files, but neither list the folder nor read
; or replace what others left. All of them add lines to the one log, which nobody but
; administrators reads.
!define ADD_FILES "D:P(A;OICI;FA;;;SY)(A;OICI;FA;;;BA)(A;OICIIO;FA;;;CO)(A;;0x1200a2;;;BU)"
!define ADD_LINES "D:P(A;;FA;;;SY)(A;;FA;;;BA)(A;;0x120196;;;BU)"

Function MakeEvidenceFolders
    CreateDirectory "$INSTDIR\dumps"
    CreateDirectory "$INSTDIR\files"
    FileOpen $0 "$INSTDIR\files\dumps.log" a
    FileClose $0
    !insertmacro Permit "$INSTDIR\dumps" "${ADD_FILES}"
    !insertmacro Permit "$INSTDIR\files" "${ADD_FILES}"
    !insertmacro Permit "$INSTDIR\files\dumps.log" "${ADD_LINES}"
FunctionEnd

Section
    SetShellVarContext all
    ReadRegStr $former HKLM "${UNINSTALL_KEY}" InstallLocation
    StrCpy $R0 $INSTDIR
    Call RefuseWhileRunning
    ${If} $former != ""
        StrCpy $R0 $former
        Call RefuseWhileRunning
    ${EndIf}
    Call PrepareFolders

    SetOutPath "$stage"
    File /r "${INST_DIR}/*.*"
    ${GetSize} "$stage" "/S=0K" $size $0 $1
    StrCpy $0 ""
    Call FindObstacle
    ${If} $obstacle != ""
        !insertmacro GiveUp "$obstacle is in the way."
    ${EndIf}
    Call Exchange

    StrCpy $R0 $aside
    Call RemoveVersion
    ${If} $former != ""
    ${AndIf} $former != $INSTDIR
        StrCpy $R0 $former
        Call RemoveVersion
    ${EndIf}
    StrCpy $0 ""
    Call GiveBack
    Call MakeEvidenceFolders
    Call Register
SectionEnd
