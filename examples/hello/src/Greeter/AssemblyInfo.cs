using System.Reflection;

[assembly: AssemblyTitle("Greeter")]
[assembly: AssemblyDescription("Says hello; built by the Marrowby example project")]
[assembly: AssemblyVersion("0.0.0.0")]
[assembly: AssemblyFileVersion("0.0.0.0")]
