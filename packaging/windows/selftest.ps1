<#
.SYNOPSIS
Tries on this Windows what quorvelle.exe was tried for under Wine only, or not at all.

.DESCRIPTION
Prints a line for each check: PASS, FAIL or SKIP, its number, what was tried, and after a
FAIL what came instead. Ends with the number of failures as the exit code.

Needs no administrator, no server and no network: it is its own server, on this machine.
Works in a folder of its own, with a configuration of its own, and removes both. Runs in
Windows PowerShell 5.1 and in PowerShell 7:

    powershell -ExecutionPolicy Bypass -File selftest.ps1

.PARAMETER Program
The quorvelle.exe to try; the one beside this file where nothing else is said.

.PARAMETER Interactive
Also tries what opens the browser, and asks what is seen in the console.

.PARAMETER OneDrive
Also installs into a new folder of your OneDrive, which is removed again.
#>
[CmdletBinding()]
param(
    [string]$Program = (Join-Path $PSScriptRoot 'quorvelle.exe'),
    [switch]$Interactive,
    [switch]$OneDrive
)

Set-StrictMode -Version 2
$ErrorActionPreference = 'Stop'

$Program = (Resolve-Path -LiteralPath $Program).ProviderPath
$work = Join-Path ([IO.Path]::GetTempPath()) ('quorvelle-selftest-' + [guid]::NewGuid().ToString('N').Substring(0, 8))
$installs = Join-Path $work 'installs'
$null = New-Item -ItemType Directory -Path $installs, (Join-Path $work 'config')
$configBefore = $env:QUORVELLE_CONFIG_DIR
$env:QUORVELLE_CONFIG_DIR = Join-Path $work 'config'
$configFile = Join-Path $env:QUORVELLE_CONFIG_DIR 'config.json'
# Letters beyond ASCII, which this file is limited to: Windows PowerShell reads it in the
# system's code page.
$strange = 'gr' + [char]0xF6 + [char]0xDF + 'e-' + [char]0x65E5 + [char]0x672C
$failures = 0

# Names and lengths that .NET refuses in places.
Add-Type -Namespace Quorvelle -Name Native -MemberDefinition @'
[DllImport("kernel32.dll", CharSet = CharSet.Unicode, SetLastError = true)]
public static extern bool CreateDirectoryW(string path, IntPtr security);
[DllImport("kernel32.dll", CharSet = CharSet.Unicode, SetLastError = true)]
public static extern Microsoft.Win32.SafeHandles.SafeFileHandle CreateFileW(string path, uint access,
    uint share, IntPtr security, uint disposition, uint flags, IntPtr template);
[DllImport("kernel32.dll", CharSet = CharSet.Unicode, SetLastError = true)]
public static extern uint GetFileAttributesW(string path);
'@

# What the server holds. Files: build -> (path -> bytes). Seen: requests, method and target.
$state = [hashtable]::Synchronized(@{
        Build = ''; Engine = 'cargo'; Targets = '[]'; Files = @{}; Manifest = ''
        Seen = [Collections.ArrayList]::Synchronized((New-Object Collections.ArrayList))
    })

$serve = {
    param($listener, $state)
    while ($listener.IsListening) {
        try { $context = $listener.GetContext() } catch { break }
        $request = $context.Request
        $path = [Uri]::UnescapeDataString($request.Url.AbsolutePath)
        $null = $state.Seen.Add($request.HttpMethod + ' ' + $request.RawUrl)
        $name = ''
        if ($request.Url.Query -match '[?&]path=([^&]*)') { $name = [Uri]::UnescapeDataString($Matches[1]) }
        $reply = [Text.Encoding]::UTF8.GetBytes('{}')
        $status = 200
        if ($path -match '/api/builds/([^/]+)/files$') {
            $build = $Matches[1]
            if ($request.HttpMethod -eq 'GET') {
                $reply = [byte[]]$state.Files[$build][$name]
            } else {
                $body = New-Object IO.MemoryStream
                $request.InputStream.CopyTo($body)
                if (-not $state.Files.ContainsKey($build)) { $state.Files[$build] = @{} }
                $state.Files[$build][$name] = $body.ToArray()
            }
        } elseif ($path -match '/api/builds/([^/]+)/finalize$') {
            $reply = [Text.Encoding]::UTF8.GetBytes('{"file_count":' + $state.Files[$Matches[1]].Count + '}')
        } elseif ($path -match '/api/builds/([^/]+)$') {
            $list = foreach ($file in $state.Files[$Matches[1]].GetEnumerator()) {
                '{"path":"' + $file.Key + '","size":' + $file.Value.Length + '}'
            }
            $reply = [Text.Encoding]::UTF8.GetBytes('{"files":[' + ($list -join ',') + ']}')
        } elseif ($path -match '/promote$') {
            if ($request.Url.Query -match 'build=([^&]*)') { $state.Build = $Matches[1] }
        } elseif ($path -match '/api/tide/sync/') {
            $reply = [Text.Encoding]::UTF8.GetBytes('{"build":"' + $state.Build + '","manifest_url":"' +
                $state.Manifest + '","manifest_sig_url":"' + $state.Manifest + '.sig","chunks":{}}')
        } elseif ($path -match '/api/channels/') {
            $reply = [Text.Encoding]::UTF8.GetBytes('{"build":"' + $state.Build + '","engine":"' +
                $state.Engine + '","launch_targets":' + $state.Targets + '}')
        } else {
            $status = 404
        }
        try {
            $context.Response.StatusCode = $status
            $context.Response.ContentLength64 = $reply.Length
            $context.Response.OutputStream.Write($reply, 0, $reply.Length)
            $context.Response.Close()
        } catch { continue }
    }
}

# A server whose certificate nobody trusts; it notes who comes, and whatever is sent inside TLS.
$serveBadly = {
    param($listener, $certificate, $state)
    while ($true) {
        try { $client = $listener.AcceptTcpClient() } catch { break }
        $null = $state.Seen.Add('TLS')
        try {
            $stream = New-Object Net.Security.SslStream($client.GetStream(), $false)
            $stream.AuthenticateAsServer($certificate)
            $block = New-Object byte[] 1024
            if ($stream.Read($block, 0, $block.Length) -gt 0) { $null = $state.Seen.Add('BAD TLS') }
        } catch { continue } finally { $client.Close() }
    }
}

function Start-InBackground([scriptblock]$Script, [object[]]$Arguments) {
    $shell = [PowerShell]::Create()
    $null = $shell.AddScript($Script.ToString())
    foreach ($argument in $Arguments) { $null = $shell.AddArgument($argument) }
    $null = $shell.BeginInvoke()
    $shell
}

function Get-FreePort {
    $probe = New-Object Net.Sockets.TcpListener([Net.IPAddress]::Loopback, 0)
    $probe.Start()
    $port = $probe.LocalEndpoint.Port
    $probe.Stop()
    $port
}

# One argument as programs of Windows read it.
function Get-Quoted([string]$Word) {
    if ($Word -ne '' -and $Word -notmatch '[\s"]') { return $Word }
    '"' + ([regex]::Replace([regex]::Replace($Word, '(\\*)"', '$1$1\"'), '(\\+)$', '$1$1')) + '"'
}

function Start-Client([string[]]$Words, [string]$File = $Program) {
    $start = New-Object Diagnostics.ProcessStartInfo
    $start.FileName = $File
    $start.Arguments = ($Words | ForEach-Object { Get-Quoted $_ }) -join ' '
    $start.UseShellExecute = $false
    $start.RedirectStandardInput = $true
    $start.RedirectStandardOutput = $true
    $start.RedirectStandardError = $true
    $start.StandardOutputEncoding = $start.StandardErrorEncoding = New-Object Text.UTF8Encoding($false)
    [Diagnostics.Process]::Start($start)
}

function Invoke-Client([string[]]$Words) {
    $process = Start-Client $Words
    $process.StandardInput.Close()
    $out = $process.StandardOutput.ReadToEndAsync()
    $err = $process.StandardError.ReadToEndAsync()
    $process.WaitForExit()
    [pscustomobject]@{ Code = $process.ExitCode; Out = $out.Result.Trim(); Err = $err.Result.Trim() }
}

function Assert-That([bool]$Condition, [string]$Otherwise) {
    if (-not $Condition) { throw $Otherwise }
}

function Invoke-Expecting([int]$Code, [string[]]$Words) {
    $got = Invoke-Client $Words
    Assert-That ($got.Code -eq $Code) ("'" + ($Words -join ' ') + "' ended with $($got.Code), not ${Code}: $($got.Out) $($got.Err)")
    $got
}

function Test-Point([int]$Number, [string]$What, [scriptblock]$Check) {
    try {
        $skipped = & $Check | Where-Object { $_ -is [string] -and $_.StartsWith('skip: ') }
        if ($skipped) { Write-Output ('SKIP {0,2}  {1} ({2})' -f $Number, $What, ([string]$skipped).Substring(6)) }
        else { Write-Output ('PASS {0,2}  {1}' -f $Number, $What) }
    } catch {
        $script:failures++
        Write-Output ('FAIL {0,2}  {1}: {2}' -f $Number, $What, $_.Exception.Message)
    }
}

# Puts a build into the channel; its files as a table of path and text or bytes.
function Publish-Build([string]$Build, [hashtable]$Texts) {
    $files = @{}
    foreach ($path in $Texts.Keys) {
        $content = $Texts[$path]
        if ($content -is [string]) { $content = [Text.Encoding]::UTF8.GetBytes($content) }
        $files[$path] = $content
    }
    $state.Files[$Build] = $files
    $state.Build = $Build
}

# Syncs while something in the install is in use, which $Release ends. The new build comes at once
# or waits for that; it is never there in parts.
function Assert-UpdateIn([string]$Name, [string]$Dir, [scriptblock]$Release) {
    try { $got = Invoke-Client @('sync', '--name', $Name) } finally { & $Release }
    Assert-That ($got.Code -eq 0 -or $got.Code -eq 3) "sync ended with $($got.Code): $($got.Out) $($got.Err)"
    Write-Host ('         {0}: sync ended with {1}' -f $Name, $got.Code)
    $wanted = if ($got.Code -eq 3) { 'one' } else { 'two' }
    Assert-That ([IO.File]::ReadAllText("$Dir\data") -eq $wanted) "the install is not the build of '$wanted'"
    $null = Invoke-Expecting 0 @('sync', '--name', $Name)
    Assert-That ([IO.File]::ReadAllText("$Dir\data") -eq 'two') 'the new build did not come'
}

# A subscription of its own for a check, so that no check meets what another one left.
function Add-Subscription([string]$Name, [string]$Dir = (Join-Path $installs $Name)) {
    $null = Invoke-Expecting 0 @('subscribe', $url, 'stable', '--dir', $Dir, '--name', $Name)
    $Dir
}

function Get-LongName([string]$Path) { '\\?\' + $Path }

function New-OddFile([string]$Path) {
    $handle = [Quorvelle.Native]::CreateFileW((Get-LongName $Path), [uint32]1073741824, 7, [IntPtr]::Zero, 2, 128, [IntPtr]::Zero)
    Assert-That (-not $handle.IsInvalid) "cannot make $Path"
    $handle.Close()
}

function Test-LongPath([string]$Path) {
    [Quorvelle.Native]::GetFileAttributesW((Get-LongName $Path)) -ne [uint32]::MaxValue
}

$port = Get-FreePort
$url = "http://localhost:$port"
$listener = New-Object Net.HttpListener
$listener.Prefixes.Add("$url/")
$listener.Start()
$server = Start-InBackground $serve @($listener, $state)
$badListener = $null
$badServer = $null
$certificate = $null

try {
    Write-Output ((Invoke-Client 'version').Out + ' on ' + [Environment]::OSVersion.VersionString + ', PowerShell ' + $PSVersionTable.PSVersion)

    Test-Point 1 'text beyond ASCII comes whole, through a pipe and in the console' {
        $null = Invoke-Expecting 0 @('config', 'set', 'server', "http://$strange")
        $got = Invoke-Client @('config', 'get', 'server')
        Assert-That ($got.Out -eq "http://$strange") "got '$($got.Out)'"
        if ($Interactive) {
            $null = Start-Process -FilePath $Program -ArgumentList 'config', 'get', 'server' -NoNewWindow -Wait -PassThru
            $seen = Read-Host 'Does the line above read gr, o with dots, sharp s, e, minus, two Japanese signs? (y/n)'
            Assert-That ($seen -eq 'y') 'the console shows something else'
        }
    }

    Test-Point 2 'the code page of the console is what it was before' {
        $before = (chcp.com) -join ''
        $null = Start-Process -FilePath $Program -ArgumentList 'version' -NoNewWindow -Wait -PassThru
        $after = (chcp.com) -join ''
        Assert-That ($before -eq $after) "before '$before', after '$after'"
    }

    Test-Point 3 'the configuration belongs to its owner alone' {
        $access = Get-Acl -LiteralPath $configFile
        $rules = @($access.Access)
        $me = [Security.Principal.WindowsIdentity]::GetCurrent().Name
        Assert-That ($access.AreAccessRulesProtected) 'it takes rights over from its folder'
        Assert-That ($rules.Count -eq 1 -and $rules[0].IdentityReference.Value -eq $me) (($rules | ForEach-Object { $_.IdentityReference.Value }) -join ', ')
    }

    Test-Point 4 'push and sync of a path of more than 300 characters' {
        $source = Join-Path $work 'source'
        $null = [Quorvelle.Native]::CreateDirectoryW($source, [IntPtr]::Zero)
        $deep = $source
        foreach ($letter in 'a', 'b', 'c') {
            $deep = Join-Path $deep ($letter * 100)
            $null = [Quorvelle.Native]::CreateDirectoryW((Get-LongName $deep), [IntPtr]::Zero)
        }
        New-OddFile "$deep\file"
        $null = Invoke-Expecting 0 @('push', $source, '--channel', 'stable', '--build', 'long', '--server', $url)
        $dir = Add-Subscription 'long'
        $null = Invoke-Expecting 0 @('sync', '--name', 'long')
        Assert-That (Test-LongPath ($dir + $deep.Substring($source.Length) + '\file')) 'the file is not there'
        Publish-Build 'short' @{ 'a' = 'a' }
        $null = Invoke-Expecting 0 @('sync', '--name', 'long')
    }

    Test-Point 5 'a file that is open may delay an update, and does nothing else' {
        foreach ($share in 'Read', 'None') {
            Publish-Build "open-$share-1" @{ 'data' = 'one' }
            $dir = Add-Subscription "open-$share"
            $null = Invoke-Expecting 0 @('sync', '--name', "open-$share")
            Publish-Build "open-$share-2" @{ 'data' = 'two' }
            $open = [IO.File]::Open("$dir\data", 'Open', 'Read', $share)
            Assert-UpdateIn "open-$share" $dir { $open.Close() }
        }
    }

    Test-Point 6 'a program that runs may delay an update, and does nothing else' {
        $shell = [IO.File]::ReadAllBytes((Join-Path ([Environment]::SystemDirectory) 'cmd.exe'))
        Publish-Build 'run-1' @{ 'tool.exe' = $shell; 'data' = 'one' }
        $dir = Add-Subscription 'run'
        $null = Invoke-Expecting 0 @('sync', '--name', 'run')
        Publish-Build 'run-2' @{ 'tool.exe' = $shell; 'data' = 'two' }
        # It waits for its standard input to end.
        $running = Start-Client @('/q', '/k') "$dir\tool.exe"
        Assert-UpdateIn 'run' $dir {
            $running.StandardInput.Close()
            $running.WaitForExit()
        }
    }

    Test-Point 7 'odd names in an install stop no update' {
        Publish-Build 'odd-1' @{ 'data' = 'one' }
        $dir = Add-Subscription 'odd'
        $null = Invoke-Expecting 0 @('sync', '--name', 'odd')
        foreach ($round in 2, 3) {
            foreach ($name in 'nul', 'foo.', 'blank ') { New-OddFile "$dir\$name" }
            Publish-Build "odd-$round" @{ 'data' = "round $round" }
            $null = Invoke-Expecting 0 @('sync', '--name', 'odd')
            Assert-That ([IO.File]::ReadAllText("$dir\data") -eq "round $round") "round $round did not come"
        }
        $left = @(Get-ChildItem -LiteralPath (Join-Path $installs '.quorvelle') -Force | Where-Object { $_.Name -like 'odd.old*' })
        Assert-That ($left.Count -eq 0) 'an old build was left behind'
    }

    Test-Point 8 'junctions are removed, never followed, and may stand for the install' {
        $outside = (New-Item -ItemType Directory -Path (Join-Path $work 'outside')).FullName
        [IO.File]::WriteAllText("$outside\precious", 'p')
        Publish-Build 'junction-1' @{ 'data' = 'one' }
        $dir = Add-Subscription 'junction'
        $null = Invoke-Expecting 0 @('sync', '--name', 'junction')
        $null = New-Item -ItemType Junction -Path "$dir\link" -Target $outside
        Publish-Build 'junction-2' @{ 'data' = 'two' }
        $null = Invoke-Expecting 0 @('sync', '--name', 'junction')
        Assert-That (Test-Path -LiteralPath "$outside\precious") 'what is behind the junction is gone'
        Assert-That (-not (Test-Path -LiteralPath "$dir\link")) 'the junction stands in the new build'
        $real = (New-Item -ItemType Directory -Path (Join-Path $work 'elsewhere\moved') -Force).FullName
        $linked = Join-Path $installs 'linked'
        $null = New-Item -ItemType Junction -Path $linked -Target $real
        $null = Add-Subscription 'linked' $linked
        $null = Invoke-Expecting 0 @('sync', '--name', 'linked')
        Assert-That (([IO.File]::GetAttributes($linked) -band [IO.FileAttributes]::ReparsePoint) -ne 0) 'the junction was replaced'
        Assert-That (Test-Path -LiteralPath "$real\data") 'the build is not behind the junction'
    }

    Test-Point 9 'an install below OneDrive is updated' {
        if (-not $OneDrive) { return 'skip: only with -OneDrive' }
        if (-not $env:OneDrive) { return 'skip: no OneDrive here' }
        $cloud = Join-Path $env:OneDrive ('quorvelle-selftest-' + [guid]::NewGuid().ToString('N').Substring(0, 8))
        try {
            $dir = Add-Subscription 'cloud' (Join-Path $cloud 'app')
            foreach ($round in 1, 2, 3) {
                Publish-Build "cloud-$round" @{ 'folder/data' = "round $round" }
                $null = Invoke-Expecting 0 @('sync', '--name', 'cloud')
                Assert-That ([IO.File]::ReadAllText("$dir\folder\data") -eq "round $round") "round $round did not come"
                Start-Sleep -Seconds 20
                Write-Host ('         ' + ((attrib.exe "$dir\folder") -join ' '))
                Write-Host ('         ' + ((fsutil.exe reparsepoint query "$dir\folder" | Select-Object -First 1) -join ' '))
            }
        } finally { Remove-Item -LiteralPath $cloud -Recurse -Force -ErrorAction SilentlyContinue }
    }

    Test-Point 10 'run gives the caller its output back at once' {
        $state.Targets = '[{"label":"Sleep","exe":"sleep.ps1"}]'
        Publish-Build 'sleep' @{ 'sleep.ps1' = 'Start-Sleep -Seconds 12' }
        $null = Add-Subscription 'sleep'
        $null = Invoke-Expecting 0 @('sync', '--name', 'sleep')
        $watch = [Diagnostics.Stopwatch]::StartNew()
        $null = Invoke-Expecting 0 @('run', 'sleep')
        Assert-That ($watch.Elapsed.TotalSeconds -lt 10) "it took $($watch.Elapsed.TotalSeconds) s"
        if ($Interactive) {
            Write-Host '         A program was started that lives for 12 s: press Ctrl-C in another window that ran it by hand to see it live on.'
        }
    }

    Test-Point 11 'scripts get their arguments whole' {
        $state.Targets = '[{"label":"Batch","exe":"tell.bat"},{"label":"Shell","exe":"tell.ps1"}]'
        Publish-Build 'tell' @{
            'tell.bat' = '@"' + $Program + '" config set token %*' + "`r`n"
            'tell.ps1' = 'param([string]$Word) & "' + $Program + '" config set server $Word'
        }
        $null = Add-Subscription 'tell'
        $null = Invoke-Expecting 0 @('sync', '--name', 'tell')
        foreach ($word in '%PATH%', 'a&b', 'say "hi"', '!x!', '^', 'a b\') {
            $null = Invoke-Expecting 0 @('run', 'tell', '--target', 'Batch', '--wait', '--', $word)
            $got = (Get-Content -LiteralPath $configFile -Raw -Encoding UTF8 | ConvertFrom-Json).token
            Assert-That ($got -eq $word) "a batch file got '$got' for '$word'"
        }
        foreach ($word in '%PATH%', 'a&b', '!x!', '^') {
            $null = Invoke-Expecting 0 @('run', 'tell', '--target', 'Shell', '--wait', '--', $word)
            $got = (Get-Content -LiteralPath $configFile -Raw -Encoding UTF8 | ConvertFrom-Json).server
            Assert-That ($got -eq $word) "a PowerShell script got '$got' for '$word'"
        }
    }

    Test-Point 12 'login opens the browser with the whole address' {
        if (-not $Interactive) { return 'skip: only with -Interactive' }
        $login = Start-Client @('login', "$url/a%20b")
        $wanted = 'GET /a%20b/api/sso/start?port='
        for ($look = 0; $look -lt 150 -and -not ($state.Seen.ToArray() -match [regex]::Escape($wanted)); $look++) { Start-Sleep -Milliseconds 200 }
        $login.Kill()
        Assert-That ([bool]($state.Seen.ToArray() -match [regex]::Escape($wanted))) 'no such request came within 30 s'
    }

    Test-Point 13 'the Tab key completes' {
        $script = Join-Path $PSScriptRoot 'completions\quorvelle.ps1'
        if (-not (Test-Path -LiteralPath $script)) { return "skip: no $script" }
        . $script
        $line = 'quorvelle config '
        $words = @((TabExpansion2 -inputScript $line -cursorColumn $line.Length).CompletionMatches | ForEach-Object { $_.CompletionText })
        Assert-That ($words -contains 'set') "offered: $($words -join ' ')"
    }

    Test-Point 14 'a certificate that nobody trusts is refused by both engines' {
        if (-not (Get-Command New-SelfSignedCertificate -ErrorAction SilentlyContinue)) { return 'skip: no New-SelfSignedCertificate' }
        $made = New-SelfSignedCertificate -DnsName localhost -CertStoreLocation Cert:\CurrentUser\My
        # PowerShell 7 may get a mere description of it.
        $script:certificate = Get-Item -LiteralPath ('Cert:\CurrentUser\My\' + $made.Thumbprint)
        $script:badListener = New-Object Net.Sockets.TcpListener([Net.IPAddress]::Loopback, 0)
        $badListener.Start()
        $script:badServer = Start-InBackground $serveBadly @($badListener, $certificate, $state)
        $bad = "https://localhost:$($badListener.LocalEndpoint.Port)"
        $null = Invoke-Expecting 0 @('subscribe', $bad, 'stable', '--dir', (Join-Path $installs 'bad'), '--name', 'bad')
        $null = Invoke-Expecting 2 @('sync', '--name', 'bad')
        $state.Engine = 'tide'
        $state.Manifest = "$bad/manifest.json"
        $null = Add-Subscription 'bad-chunks'
        $null = Invoke-Expecting 2 @('sync', '--name', 'bad-chunks')
        $state.Engine = 'cargo'
        Assert-That (@($state.Seen.ToArray() -eq 'TLS').Count -ge 2) 'that server was not asked by both'
        Assert-That (-not ($state.Seen.ToArray() -contains 'BAD TLS')) 'something was sent to that server'
    }

    Test-Point 15 '500 programs are synced three times, with the virus scanner on' {
        $small = [IO.File]::ReadAllBytes((Join-Path ([Environment]::SystemDirectory) 'where.exe'))
        $null = Add-Subscription 'many'
        foreach ($round in 1, 2, 3) {
            $files = @{}
            foreach ($number in 1..500) { $files["program-$number.exe"] = $small }
            $files['round'] = "$round"
            Publish-Build "many-$round" $files
            $null = Invoke-Expecting 0 @('sync', '--name', 'many')
        }
    }
} finally {
    $listener.Stop()
    if ($badListener) { $badListener.Stop() }
    foreach ($shell in $server, $badServer) { if ($shell) { $shell.Dispose() } }
    if ($certificate) { Remove-Item -LiteralPath ('Cert:\CurrentUser\My\' + $certificate.Thumbprint) -ErrorAction SilentlyContinue }
    $env:QUORVELLE_CONFIG_DIR = $configBefore
    # The program of a check may live for some seconds more.
    for ($look = 0; $look -lt 15 -and (Test-LongPath $work); $look++) {
        if ($look -gt 0) { Start-Sleep -Seconds 1 }
        Remove-Item -LiteralPath (Get-LongName $work) -Recurse -Force -ErrorAction SilentlyContinue
    }
    if (Test-LongPath $work) { Write-Output "Left behind: $work" }
}

Write-Output "$failures failed"
exit $failures
